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

std::string maskURL(std::string_view url, bool isMalformed) {
  size_t scheme = url.find("://");
  bool hasScheme = scheme != std::string_view::npos && url.find_first_of(":/?#@") == scheme;
  size_t start = hasScheme ? scheme + 3 : 0;
  size_t authorityEnd = isMalformed ? url.size() : std::min(url.size(), url.find_first_of("/?#", start));
  size_t at = url.substr(0, authorityEnd).rfind('@');
  std::string masked(url.substr(0, start));
  if (at != std::string_view::npos) {
    masked.append("***@");
    start = at + 1;
  }
  size_t queryStart = url.find_first_of("?#", start);
  masked.append(url.substr(start, queryStart - start));
  if (queryStart != std::string_view::npos) masked.append(1, url[queryStart]).append("***");
  return masked;
}

std::string maskAnyURL(std::string_view text) {
  return text.find("://") == std::string_view::npos ? std::string(text) : maskURL(text, true);
}

std::string shortened(std::string_view wholeText) {
  std::string text = maskAnyURL(wholeText);
  constexpr size_t kShown = 40;
  if (text.size() <= kShown) return text;
  size_t end = kShown;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return text.substr(0, end) + "...";
}

}  // namespace tools
