/* A value as it is written on the command line: [TYPE:]VALUE. */
#ifndef VXCALL_TYPED_TEXT_H
#define VXCALL_TYPED_TEXT_H

#include <string_view>
#include <vector>

#include "common/Value.h"

namespace tools::vxcall {

/* The value of a text; a null reference for nil. Throws UsageError. */
Value valueFromTypedText(std::string_view text);

/* Whether a text begins with a type that exists. */
bool hasType(std::string_view text);
const std::vector<std::string_view>& typeNames();

}  // namespace tools::vxcall

#endif
