/* A value as it is written on the command line: [TYPE:]VALUE. */
#ifndef VXCALL_TYPED_TEXT_H
#define VXCALL_TYPED_TEXT_H

#include <string_view>

#include "common/Value.h"

namespace tools::vxcall {

/* The value of a text; a null reference for nil. Throws UsageError. */
Value valueFromTypedText(std::string_view text);

}  // namespace tools::vxcall

#endif
