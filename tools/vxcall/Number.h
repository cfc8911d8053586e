/* Numbers that a request can carry. */
#ifndef VXCALL_NUMBER_H
#define VXCALL_NUMBER_H

#include <cstdint>

#include <string>

#include "common/UsageError.h"
#include "common/Value.h"

namespace tools::vxcall {

/* What to say about an integer that both protocols would send as 0. */
UsageError integerTooLarge(const std::string& digits);

/* Throws UsageError if 32 bits do not hold the value. */
Value makeInteger(int64_t value);

Value makeDouble(double value);

}  // namespace tools::vxcall

#endif
