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

/*
 * A URL or a part of one with *** for its user and password, its query and its fragment. In a text that
 * failed to parse as a URL, a password may hold any delimiter; there everything up to the last @ counts as
 * one.
 */
std::string maskURL(std::string_view url, bool isMalformed = false);

/* A text that may be a URL, such as a misplaced argument, with its secrets masked if it is one. */
std::string maskAnyURL(std::string_view text);

/* Enough of such a text to know it by. */
std::string shortened(std::string_view text);

}  // namespace tools

#endif
