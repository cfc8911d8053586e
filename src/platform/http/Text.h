/* Text of URLs and messages: views of strings, strings of bytes that a peer sent, characters. */
#ifndef BQ_HTTP_TEXT_H
#define BQ_HTTP_TEXT_H

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
inline bool isDigit(char c) {
  return c >= '0' && c <= '9';
}
inline bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
inline bool isHexDigit(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
inline char lowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/* Whether the text is a token of HTTP, as methods and header names are. */
inline bool isToken(std::string_view text) {
  for (char c : text) {
    bool isMark = c != '\0' && std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
    if (!isLetter(c) && !isDigit(c) && !isMark) return false;
  }
  return !text.empty();
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
  size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace bq

#endif
