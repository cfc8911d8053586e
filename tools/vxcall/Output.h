/* Results as text. */
#ifndef VXCALL_OUTPUT_H
#define VXCALL_OUTPUT_H

#include <optional>
#include <string>

#include <BQ/BQBase.h>

namespace tools::vxcall {

/* Any value as JSON, two blanks per level, with a line end. */
std::string formatJson(BQTypeRef value);

/* A value as an XML property list; empty for null. Nothing if it holds what such a list cannot hold. */
std::optional<std::string> formatPropertyList(BQTypeRef value);

}  // namespace tools::vxcall

#endif
