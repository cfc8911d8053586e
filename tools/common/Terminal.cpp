#include "common/Terminal.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace tools {
namespace {

/* The length of the UTF-8 character at the start of a text, and its code; 0 if there is none. */
size_t decodeCharacter(std::string_view text, uint32_t& code) {
  constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  constexpr uint32_t kMost = 0x10FFFF, kFirstSurrogate = 0xD800, kLastSurrogate = 0xDFFF;
  auto lead = static_cast<unsigned char>(text[0]);
  code = lead;
  if (lead < 0x80) return 1;
  size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC0 || lead >= 0xF8 || text.size() < length) return 0;
  code = lead & (0x7FU >> length);
  for (char next : text.substr(1, length - 1)) {
    if ((static_cast<unsigned char>(next) & 0xC0) != 0x80) return 0;
    code = code << 6 | (static_cast<unsigned char>(next) & 0x3F);
  }
  bool isSurrogate = code >= kFirstSurrogate && code <= kLastSurrogate;
  return code < kLeast[length] || code > kMost || isSurrogate ? 0 : length;
}

bool isControl(uint32_t code) {
  return code < 0x20 || (code >= 0x7F && code <= 0x9F) || code == 0x061C || code == 0x200E ||
         code == 0x200F || (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

void appendCode(std::string& text, const char* format, unsigned code) {
  char written[8];
  text.append(written, static_cast<size_t>(std::snprintf(written, sizeof written, format, code)));
}

}  // namespace

std::string escapeControls(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size());
  while (!text.empty()) {
    uint32_t code = 0;
    size_t length = decodeCharacter(text, code);
    if (length == 0) {
      appendCode(escaped, "\\x%02x", static_cast<unsigned char>(text[0]));
      length = 1;
    } else if (isControl(code) && code != '\n' && code != '\t' && !text.starts_with("\r\n")) {
      appendCode(escaped, "\\u%04x", code);
    } else {
      escaped.append(text.substr(0, length));
    }
    text.remove_prefix(length);
  }
  return escaped;
}

std::string singleLine(std::string_view text) {
  std::string line(text);
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r' || c == '\t'; }, ' ');
  return escapeControls(line);
}

void complain(const char* program, std::string_view text) {
  std::fprintf(stderr, "%s: %s\n", program, singleLine(text).c_str());
}

}  // namespace tools
