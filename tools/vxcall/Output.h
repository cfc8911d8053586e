/* Results as text. */
#ifndef VXCALL_OUTPUT_H
#define VXCALL_OUTPUT_H

#include <optional>
#include <string>

#include <BQ/BQBase.h>

#include "ValuePath.h"

namespace tools::vxcall {

/* Any value as JSON, two blanks per level, with a line end; what could command a terminal is escaped. */
std::string formatJson(BQTypeRef value);

/* A value as an XML property list; empty for null. Nothing if it holds what such a list cannot hold. */
std::optional<std::string> formatPropertyList(BQTypeRef value);

/* Where in such a value, and what: "result.items[3] is null". `path` is what the value itself is called. */
std::string describeUnlistable(BQTypeRef value, const ValuePath& path);

}  // namespace tools::vxcall

#endif
