#include "values/AutoScalar.h"

#include <BQ/BQNumber.h>
#include <BQ/BQObject.h>

namespace vx {
namespace {

template <class T>
T read(BQTypeRef value, BQNumberType type) {
  T result = 0;
  return BQNumberGetValue(static_cast<const BQNumber*>(value), type, &result) ? result : T{0};
}

BQTypeRef makeInt32(long value) {
  auto integer = static_cast<int32_t>(value);
  return BQNumberCreate(kBQNumberSInt32Type, &integer);
}

}  // namespace

AutoScalar::AutoScalar(int value) : value(BQNumberCreate(kBQNumberIntType, &value)) {}
AutoScalar::AutoScalar(long value) : value(makeInt32(value)) {}
AutoScalar::AutoScalar(float value) : value(BQNumberCreate(kBQNumberFloatType, &value)) {}
AutoScalar::AutoScalar(double value) : value(BQNumberCreate(kBQNumberDoubleType, &value)) {}
AutoScalar::~AutoScalar() {
  BQRelease(value);
}

int AutoScalar::toInt() const {
  return read<int32_t>(value, kBQNumberSInt32Type);
}
float AutoScalar::toFloat() const {
  return read<float>(value, kBQNumberFloatType);
}
double AutoScalar::toDouble() const {
  return read<double>(value, kBQNumberDoubleType);
}

}  // namespace vx
