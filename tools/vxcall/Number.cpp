#include "Number.h"

#include <limits>

#include <BQ/BQNumber.h>

namespace tools::vxcall {

UsageError integerTooLarge(const std::string& digits) {
  return UsageError(digits + " does not fit an int of 32 bits; write it as double: or string:");
}

Value makeInteger(int64_t value) {
  if (value < std::numeric_limits<int32_t>::min() || value > std::numeric_limits<int32_t>::max()) {
    throw integerTooLarge(std::to_string(value));
  }
  auto number = static_cast<int32_t>(value);
  return Value::adopt(BQNumberCreate(kBQNumberSInt32Type, &number));
}

Value makeDouble(double value) {
  return Value::adopt(BQNumberCreate(kBQNumberFloat64Type, &value));
}

}  // namespace tools::vxcall
