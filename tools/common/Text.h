/* The library's strings as std::string, and back. */
#ifndef TOOLS_TEXT_H
#define TOOLS_TEXT_H

#include <string>
#include <string_view>

#include <BQ/BQBase.h>
#include <BQ/BQRef.h>

namespace tools {

/* Throws UsageError if the bytes are not UTF-8. */
BQRef<const BQString> makeString(std::string_view text);

/* The text of a string, borrowed; empty for null and for an object of another class. */
std::string_view textOf(BQTypeRef string);

/* The text as one line that a terminal can show: every control character becomes a blank. */
std::string singleLine(std::string_view text);

/* Enough of a text to know it by, as such a line. */
std::string shortened(std::string_view text);

}  // namespace tools

#endif
