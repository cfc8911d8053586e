#include "Trace.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>
#include <VX/VXMethodInvocation.h>

#include "RequestDocument.h"
#include "common/Terminal.h"
#include "common/Text.h"
#include "common/Value.h"

namespace tools::vxcall {
namespace {

void addLine(std::string& trace, std::string_view mark, std::string_view text) {
  trace.append(mark).append(singleLine(text)).append("\n");
}

/* What the request asks for: a path, or of a proxy the whole URL, which an encrypted call does without. */
std::string targetOf(std::string_view url, bool isForProxy) {
  url = url.substr(0, url.find('#'));
  size_t host = url.find("//") + 2;
  size_t pathStart = std::min(url.size(), url.find_first_of("/?", host));
  std::string path(url.substr(pathStart));
  if (!path.starts_with('/')) path.insert(0, "/");
  if (!isForProxy || !url.starts_with("http:")) return path;
  std::string_view authority = url.substr(host, pathStart - host);
  return "http://" + std::string(authority.substr(authority.rfind('@') + 1)) + path;
}

std::string requestLineOf(const Invocation& invocation) {
  auto property = [&](const BQString* key) {
    return BQAdopt(VXMethodInvocationCopyProperty(invocation.handle.get(), key));
  };
  Value method = property(kVXPostingMethod), version = property(kVXHTTPVersion),
        proxy = property(kVXHTTPProxy);
  std::string line(method ? textOf(method.get()) : "POST");
  line.append(" ").append(maskURL(targetOf(invocation.url, bool(proxy)))).append(" ");
  return line.append(textOf(version ? version.get() : kBQHTTPVersion1_1));
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

void addBody(std::string& trace, std::string_view body) {
  trace += body;
  if (!body.empty() && body.back() != '\n') trace += '\n';
}

void addStatusLine(std::string& trace, BQTypeRef response) {
  if (BQGetTypeID(response) != BQHTTPMessageGetTypeID()) return;
  auto line = BQAdopt(BQHTTPMessageCopyResponseStatusLine(static_cast<const BQHTTPMessage*>(response)));
  addLine(trace, "< ", textOf(line.get()));
}

/* The library captures nothing of a call that gets no reply. */
void addDocument(std::string& trace, const Invocation& invocation) {
  std::string document = makeRequestDocument(invocation).value_or("");
  std::erase(document, '\r');
  addBody(trace, document);
}

}  // namespace

std::string traceOf(const BQDictionary* result, const Invocation& invocation) {
  std::string trace;
  BQTypeRef headers = BQDictionaryGetValue(result, kVXDebugOutgoingHeaders);
  addLine(trace, "> ", requestLineOf(invocation));
  if (headers == nullptr) addDocument(trace, invocation);
  addHeaders(trace, "> ", headers);
  addBody(trace, textOf(BQDictionaryGetValue(result, kVXDebugOutgoingBody)));
  addStatusLine(trace, BQDictionaryGetValue(result, kVXHTTPResponseMessage));
  addHeaders(trace, "< ", BQDictionaryGetValue(result, kVXDebugIncomingHeaders));
  addBody(trace, textOf(BQDictionaryGetValue(result, kVXDebugIncomingBody)));
  return trace;
}

}  // namespace tools::vxcall
