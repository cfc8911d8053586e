#include <algorithm>
#include <array>
#include <cstdio>

#include <BQ/BQString.h>

#include "platform/text/EncodingUTF8.h"
#include "platform/text/StringImpl.h"

namespace bq {
namespace {

/* The code of a character of up to three bytes. */
uint32_t codeOf(std::string_view character) {
  auto byteAt = [character](size_t index) { return static_cast<unsigned char>(character[index]); };
  switch (character.size()) {
    case 1:
      return byteAt(0);
    case 2:
      return (byteAt(0) & 0x1Fu) << 6 | (byteAt(1) & 0x3Fu);
    case 3:
      return (byteAt(0) & 0x0Fu) << 12 | (byteAt(1) & 0x3Fu) << 6 | (byteAt(2) & 0x3Fu);
    default:
      return '?';
  }
}

/* Whether a character controls a terminal, or the direction in which text is shown. */
bool isControl(uint32_t code) {
  constexpr std::array<std::array<uint32_t, 2>, 6> kControls = {
      {{0, 0x1F}, {0x7F, 0x9F}, {0x61C, 0x61C}, {0x200E, 0x200F}, {0x202A, 0x202E}, {0x2066, 0x2069}}};
  return std::any_of(kControls.begin(), kControls.end(),
                     [code](const auto& range) { return code >= range[0] && code <= range[1]; });
}

}  // namespace

void appendForDisplay(MutableString* out, std::string_view text, bool keepsLines) {
  size_t start = 0;
  for (size_t i = 0, length = 0; i < text.size(); i += length) {
    /* A constant of the program may be malformed. */
    length = std::max<size_t>(measureUTF8Character(text.data() + i, text.size() - i), 1);
    uint32_t code = codeOf(text.substr(i, length));
    if (!isControl(code) || (keepsLines && (code == '\n' || code == '\t'))) continue;
    char escape[8];
    std::snprintf(escape, sizeof escape, "\\u%04x", code);
    appendText(out, text.substr(start, i - start));
    appendText(out, escape);
    start = i + length;
  }
  appendText(out, text.substr(start));
}

}  // namespace bq

const BQString* BQStringCreateForDisplay(const BQString* string, bool keepsLines) {
  if (!bq::isString(string)) return nullptr;
  BQString* shown = BQStringCreateMutable(BQStringGetLength(string));
  bq::appendForDisplay(bq::asMutableString(shown), bq::viewOf(string), keepsLines);
  return bq::freeze(shown);
}
