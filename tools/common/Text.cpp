#include "common/Text.h"

#include <algorithm>

#include <BQ/BQString.h>

#include "common/UsageError.h"

namespace tools {

BQRef<const BQString> makeString(std::string_view text) {
  auto string = BQAdopt(BQStringCreateWithUTF8(text.data(), static_cast<BQIndex>(text.size())));
  if (!string) throw UsageError("an argument is not UTF-8 text");
  return string;
}

std::string_view textOf(BQTypeRef string) {
  if (BQGetTypeID(string) != BQStringGetTypeID()) return {};
  const auto* text = static_cast<const BQString*>(string);
  return {BQStringGetUTF8Ptr(text), static_cast<size_t>(BQStringGetLength(text))};
}

std::string singleLine(std::string_view text) {
  std::string line(text);
  std::replace_if(
      line.begin(), line.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, ' ');
  return line;
}

std::string shortened(std::string_view text) {
  constexpr size_t kShown = 40;
  if (text.size() <= kShown) return singleLine(text);
  size_t end = kShown;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return singleLine(text.substr(0, end)) + "...";
}

}  // namespace tools
