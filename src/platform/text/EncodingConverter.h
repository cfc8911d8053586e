/* Conversion by the tables of the C library, for the encodings that are not converted here by hand. */
#ifndef BQ_TEXT_ENCODING_CONVERTER_H
#define BQ_TEXT_ENCODING_CONVERTER_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace bq {

/* Whether the C library knows the encoding. `name` must stand for the life of the process. */
bool canConvert(const char* name);

/* As decodeText and encodeText, for an encoding by its name in the C library. */
bool convertToUTF8(const uint8_t* bytes, size_t length, const char* name, std::string& out);
bool convertFromUTF8(const char* utf8, size_t length, const char* name, uint8_t lossByte, std::string& out);

}  // namespace bq

#endif
