#include "Trace.h"

#include <string_view>
#include <vector>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "common/Text.h"

namespace tools::vxcall {
namespace {

void addLine(std::string& trace, std::string_view mark, std::string_view text) {
  trace.append(mark).append(singleLine(text)).append("\n");
}

void addHeaders(std::string& trace, std::string_view mark, BQTypeRef captured) {
  if (BQGetTypeID(captured) != BQDictionaryGetTypeID()) return;
  const auto* headers = static_cast<const BQDictionary*>(captured);
  auto count = static_cast<size_t>(BQDictionaryGetCount(headers));
  std::vector<BQTypeRef> names(count);
  std::vector<BQTypeRef> values(count);
  BQDictionaryGetKeysAndValues(headers, names.data(), values.data());
  for (size_t i = 0; i < count; ++i) {
    addLine(trace, mark, std::string(textOf(names[i])) + ": " + std::string(textOf(values[i])));
  }
}

void addBody(std::string& trace, BQTypeRef captured) {
  std::string_view body = textOf(captured);
  trace += body;
  if (!body.empty() && body.back() != '\n') trace += '\n';
}

void addStatusLine(std::string& trace, BQTypeRef response) {
  if (BQGetTypeID(response) != BQHTTPMessageGetTypeID()) return;
  auto line = BQAdopt(BQHTTPMessageCopyResponseStatusLine(static_cast<const BQHTTPMessage*>(response)));
  addLine(trace, "< ", textOf(line.get()));
}

}  // namespace

std::string traceOf(const BQDictionary* result) {
  std::string trace;
  addHeaders(trace, "> ", BQDictionaryGetValue(result, kVXDebugOutgoingHeaders));
  addBody(trace, BQDictionaryGetValue(result, kVXDebugOutgoingBody));
  addStatusLine(trace, BQDictionaryGetValue(result, kVXHTTPResponseMessage));
  addHeaders(trace, "< ", BQDictionaryGetValue(result, kVXDebugIncomingHeaders));
  addBody(trace, BQDictionaryGetValue(result, kVXDebugIncomingBody));
  return trace;
}

}  // namespace tools::vxcall
