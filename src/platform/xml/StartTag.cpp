#include "platform/xml/StartTag.h"

#include <algorithm>
#include <charconv>

#include "platform/text/EncodingUTF8.h"

namespace bq {
namespace {

constexpr std::string_view kWhitespace = " \t\r\n";

/* The character of a number as it is in a reference; NUL if there is none. */
char32_t numberedCharacter(std::string_view digits) {
  bool hexadecimal = digits.starts_with('x');
  if (hexadecimal) digits.remove_prefix(1);
  uint32_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number, hexadecimal ? 16 : 10);
  return isScalarValue(number) ? number : U'\0';
}

/* Appends what a reference, without "&" and ";", refers to; true if it is kept as written. */
bool appendReference(std::string& text, std::string_view name) {
  char32_t character = name.starts_with('#') ? numberedCharacter(name.substr(1))
                                             : static_cast<unsigned char>(predefinedEntity(name));
  if (character == U'\0') {
    text.append(1, '&').append(name).append(1, ';');
  } else {
    appendUTF8Character(text, character);
  }
  return character == U'\0';
}

}  // namespace

char predefinedEntity(std::string_view name) {
  if (name == "amp") return '&';
  if (name == "lt") return '<';
  if (name == "gt") return '>';
  if (name == "quot") return '"';
  return name == "apos" ? '\'' : '\0';
}

StartTag::StartTag(std::string_view tag)
    : rest_(tag.substr(std::min(tag.find_first_of(kWhitespace), tag.size()))) {}

std::string_view StartTag::nextValue() {
  size_t open = std::min(rest_.find_first_of("\"'"), rest_.size());
  size_t close = std::min(open < rest_.size() ? rest_.find(rest_[open], open + 1) : open, rest_.size());
  std::string_view value = open < close ? rest_.substr(open + 1, close - open - 1) : "";
  rest_.remove_prefix(std::min(close + 1, rest_.size()));
  return value;
}

std::optional<std::string> textWithEntityReferences(std::string_view value) {
  std::string text;
  bool found = false;
  for (size_t i = 0; i < value.size(); ++i) {
    if (value[i] == '&') {
      size_t end = value.find(';', i);
      if (end == std::string_view::npos) {
        text += value.substr(i);
        break;
      }
      found |= appendReference(text, value.substr(i + 1, end - i - 1));
      i = end;
    } else if (value[i] == '\r' && i + 1 < value.size() && value[i + 1] == '\n') {
      continue;
    } else {
      text += kWhitespace.find(value[i]) != std::string_view::npos ? ' ' : value[i];
    }
  }
  return found ? std::optional(std::move(text)) : std::nullopt;
}

}  // namespace bq
