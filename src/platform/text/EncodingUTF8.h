/* Walking and writing UTF-8, for the conversions between encodings. */
#ifndef BQ_TEXT_ENCODING_UTF8_H
#define BQ_TEXT_ENCODING_UTF8_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace bq {

/* How many bytes come before the first character that is malformed or cut short. */
size_t measureWellFormedUTF8(const char* bytes, size_t length);

/* How many bytes at the start are ASCII. */
size_t countASCIIPrefix(const char* bytes, size_t length);

/* The bytes of the character at the start, or 0 if it is malformed or cut short. `length` is not 0. */
size_t measureUTF8Character(const char* bytes, size_t length);

/* The number of a character of `length` well-formed bytes. */
char32_t decodeUTF8Character(const char* bytes, size_t length);

/* Appends a character. `character` is a Unicode scalar value. */
void appendUTF8Character(std::string& out, char32_t character);

inline constexpr bool isScalarValue(char32_t character) {
  return character < 0xD800 || (character >= 0xE000 && character <= 0x10FFFF);
}

}  // namespace bq

#endif
