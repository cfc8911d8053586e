/* Mending of bytes that should have been UTF-8. */
#ifndef BQ_TEXT_REPLACEMENT_H
#define BQ_TEXT_REPLACEMENT_H

#include <string>
#include <string_view>

namespace bq {

/* The text with U+FFFD in place of each byte that belongs to no well-formed character. */
std::string replaceMalformed(std::string_view bytes);

}  // namespace bq

#endif
