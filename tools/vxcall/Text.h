/* The library's strings as std::string, and back. */
#ifndef VXCALL_TEXT_H
#define VXCALL_TEXT_H

#include <string>
#include <string_view>

#include <BQ/BQBase.h>

#include "Ref.h"

namespace vxcall {

/* Throws UsageError if the bytes are not UTF-8. */
Ref<const BQString> makeString(std::string_view text);

/* The text of a string, borrowed; empty for null and for an object of another class. */
std::string_view textOf(BQTypeRef string);

/* The text as one line that a terminal can show: every control character becomes a blank. */
std::string singleLine(std::string_view text);

}  // namespace vxcall

#endif
