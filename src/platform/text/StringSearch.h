/* Searching in texts. */
#ifndef BQ_TEXT_STRING_SEARCH_H
#define BQ_TEXT_STRING_SEARCH_H

#include <cstddef>
#include <string_view>

namespace bq {

/* Where `part` stands first in `text` from `start` on; npos if it does not or is empty. */
size_t findText(std::string_view text, std::string_view part, size_t start, bool ignoreCase);

}  // namespace bq

#endif
