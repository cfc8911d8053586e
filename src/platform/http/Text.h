/* Text of URLs and messages: views of strings, strings of bytes that a peer sent, characters. */
#ifndef BQ_HTTP_TEXT_H
#define BQ_HTTP_TEXT_H

#include <array>
#include <string_view>

#include <BQ/BQString.h>

#include "platform/object/Object.h"

namespace bq {

inline bool isText(BQTypeRef object) {
  return isInstance(object, kStringTypeID);
}

/* The UTF-8 of a string; empty for null. */
inline std::string_view textOf(const BQString* string) {
  if (string == nullptr) return {};
  return {BQStringGetUTF8Ptr(string), static_cast<size_t>(BQStringGetLength(string))};
}

/* A string of text that is known to be well-formed, owned by the caller. */
inline const BQString* makeText(std::string_view text) {
  return BQStringCreateWithUTF8(text.data(), static_cast<BQIndex>(text.size()));
}

/* A string of bytes that a peer sent: UTF-8 if they are, else Latin-1. Owned by the caller. */
inline const BQString* makeReceivedText(std::string_view bytes) {
  const BQString* string = makeText(bytes);
  if (string != nullptr) return string;
  return BQStringCreateWithBytes(bytes.data(), static_cast<BQIndex>(bytes.size()),
                                 kBQStringEncodingISOLatin1);
}

/* Character classes, independent of the locale. */
inline constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
inline constexpr bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
inline bool isHexDigit(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
inline char lowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/* Which characters may stand in a token of HTTP. */
inline constexpr std::array<bool, 256> kTokenCharacters = [] {
  std::array<bool, 256> table{};
  for (char c = 0; c < 0x7F; ++c) table[static_cast<size_t>(c)] = isLetter(c) || isDigit(c);
  for (char c : std::string_view("!#$%&'*+-.^_`|~")) table[static_cast<size_t>(c)] = true;
  return table;
}();

/* Whether the text is a token, as methods and header names are. */
inline bool isToken(std::string_view text) {
  for (char c : text) {
    if (!kTokenCharacters[static_cast<unsigned char>(c)]) return false;
  }
  return !text.empty();
}

/* Whether the text stays on its line. */
inline bool isOneLine(std::string_view text) {
  for (char c : text) {
    if (c == '\r' || c == '\n' || c == '\0') return false;
  }
  return true;
}

inline bool equalsIgnoringCase(std::string_view first, std::string_view second) {
  if (first.size() != second.size()) return false;
  for (size_t i = 0; i < first.size(); ++i) {
    if (lowerCase(first[i]) != lowerCase(second[i])) return false;
  }
  return true;
}

/* The text without blanks and tabs at both ends. */
inline std::string_view trimBlanks(std::string_view text) {
  auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

}  // namespace bq

#endif
