/* Conversion between text encodings and UTF-8, the form in which all text is held. */
#ifndef BQ_TEXT_ENCODING_H
#define BQ_TEXT_ENCODING_H

#include <BQ/BQStringEncoding.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace bq {

/*
 * Appends to `out` the UTF-8 of bytes in an encoding other than UTF-8. False, with `out` unspecified, if they
 * are malformed or the encoding is not available. Bytes of UTF-16 and UTF-32 may begin with a byte-order
 * mark, which is consumed; without one they are big-endian.
 */
bool decodeText(const uint8_t* bytes, size_t length, BQStringEncoding encoding, std::string& out);

/*
 * Appends to `out` the bytes of well-formed UTF-8 text in an encoding other than UTF-8. A character that the
 * encoding lacks becomes `lossByte`, taken as a character if it is ASCII and as a byte if not; with
 * a `lossByte` of 0 the conversion fails. False, with `out` unspecified, then and if the encoding is
 * not available.
 */
bool encodeText(const char* utf8, size_t length, BQStringEncoding encoding, uint8_t lossByte,
                std::string& out);

/* Whether bytes are UTF-8 without overlong forms, surrogates and numbers beyond U+10FFFF. */
bool isWellFormedUTF8(const char* bytes, size_t length);

/* Whether every byte string of the encoding that is pure ASCII is the same text in UTF-8. */
bool isASCIISuperset(BQStringEncoding encoding);

}  // namespace bq

#endif
