/* UTF-16 and UTF-32 in either byte order. */
#ifndef BQ_TEXT_ENCODING_UTF16_H
#define BQ_TEXT_ENCODING_UTF16_H

#include <BQ/BQStringEncoding.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace bq {

inline constexpr BQStringEncoding kUTF32BE = 0x18000100u;
inline constexpr BQStringEncoding kUTF32LE = 0x1C000100u;

/* Whether the functions below know the encoding. */
bool isWideEncoding(BQStringEncoding encoding);

/* As decodeText and encodeText, for the encodings above; these lack no character. */
bool decodeWideText(const uint8_t* bytes, size_t length, BQStringEncoding encoding, std::string& out);
bool encodeWideText(const char* utf8, size_t length, BQStringEncoding encoding, std::string& out);

}  // namespace bq

#endif
