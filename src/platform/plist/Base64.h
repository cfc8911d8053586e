/* Base64 of property-list data. */
#ifndef BQ_PLIST_BASE64_H
#define BQ_PLIST_BASE64_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace bq {

/* Appends the padded base64 of bytes, on one line. */
void appendBase64(std::string& text, const uint8_t* bytes, size_t length);

/* Appends the bytes of a base64 text, white space ignored. False if it is not one, or not padded. */
bool appendBase64Decoded(std::string& bytes, std::string_view text);

}  // namespace bq

#endif
