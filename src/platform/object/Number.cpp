#include <BQ/BQNumber.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "platform/object/Classes.h"
#include "platform/object/Object.h"

/* The class bits of the flags hold the number type. */
struct BQNumber : bq::Object {
  union {
    int64_t integer;
    double real;
  };

  BQNumber(BQTypeID typeID, BQNumberType type) : Object(typeID), integer(0) {
    base.flags = static_cast<uint16_t>(type * bq::kClassFlag);
  }
  BQNumberType type() const { return static_cast<BQNumberType>(base.flags / bq::kClassFlag); }
  bool isFloat() const {
    switch (type()) {
      case kBQNumberFloat32Type:
      case kBQNumberFloat64Type:
      case kBQNumberFloatType:
      case kBQNumberDoubleType:
        return true;
      default:
        return false;
    }
  }
};

namespace bq {
namespace {

const BQNumber* asNumber(BQTypeRef object) {
  return static_cast<const BQNumber*>(object);
}

template <class T>
T load(const void* value) {
  T result;
  std::memcpy(&result, value, sizeof result);
  return result;
}

/* Reads `value` as `type` into the number; false for an unknown type. */
bool readValue(BQNumber* number, BQNumberType type, const void* value) {
  switch (type) {
    case kBQNumberSInt8Type:
    case kBQNumberCharType:
      number->integer = load<int8_t>(value);
      return true;
    case kBQNumberSInt16Type:
    case kBQNumberShortType:
      number->integer = load<int16_t>(value);
      return true;
    case kBQNumberSInt32Type:
    case kBQNumberIntType:
      number->integer = load<int32_t>(value);
      return true;
    case kBQNumberSInt64Type:
    case kBQNumberLongType:
    case kBQNumberLongLongType:
    case kBQNumberIndexType:
      number->integer = load<int64_t>(value);
      return true;
    case kBQNumberFloat32Type:
    case kBQNumberFloatType:
      number->real = load<float>(value);
      return true;
    case kBQNumberFloat64Type:
    case kBQNumberDoubleType:
      number->real = load<double>(value);
      return true;
  }
  return false;
}

/* 2^63: the first double above the range of int64_t. */
constexpr double kTwoTo63 = 9223372036854775808.0;

int64_t clampToInteger(double value) {
  if (std::isnan(value)) return 0;
  if (value >= kTwoTo63) return std::numeric_limits<int64_t>::max();
  if (value < -kTwoTo63) return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(value);
}

template <class T>
bool storeInteger(const BQNumber* number, void* out) {
  int64_t integer = number->isFloat() ? clampToInteger(number->real) : number->integer;
  bool exact =
      !number->isFloat() || (static_cast<double>(integer) == number->real && number->real < kTwoTo63);
  constexpr int64_t low = std::numeric_limits<T>::min(), high = std::numeric_limits<T>::max();
  if (integer < low || integer > high) {
    integer = integer < low ? low : high;
    exact = false;
  }
  T result = static_cast<T>(integer);
  std::memcpy(out, &result, sizeof result);
  return exact;
}

template <class T>
bool storeReal(const BQNumber* number, void* out) {
  double value = number->isFloat() ? number->real : static_cast<double>(number->integer);
  T result = static_cast<T>(value);
  std::memcpy(out, &result, sizeof result);
  return !std::isinf(result) || std::isinf(value);
}

BQComparisonResult order(bool less, bool greater) {
  return less ? kBQCompareLessThan : greater ? kBQCompareGreaterThan : kBQCompareEqualTo;
}

BQComparisonResult compareReals(double first, double second) {
  if (std::isnan(first) || std::isnan(second)) {
    return order(!std::isnan(second), !std::isnan(first));
  }
  return order(first<second, first> second);
}

/* Exact: neither side is rounded to the other's type. */
BQComparisonResult compareIntegerWithReal(int64_t integer, double real) {
  if (std::isnan(real) || real < -kTwoTo63) return kBQCompareGreaterThan;
  if (real >= kTwoTo63) return kBQCompareLessThan;
  int64_t whole = static_cast<int64_t>(real);
  if (integer != whole) return order(integer < whole, true);
  double fraction = real - static_cast<double>(whole);
  return order(fraction > 0, fraction < 0);
}

bool equalNumbers(BQTypeRef first, BQTypeRef second) {
  return BQNumberCompare(asNumber(first), asNumber(second)) == kBQCompareEqualTo;
}

BQHashCode hashNumber(BQTypeRef object) {
  const BQNumber* number = asNumber(object);
  int64_t integer = number->integer;
  if (number->isFloat()) {
    integer = clampToInteger(number->real);
    if (static_cast<double>(integer) != number->real) {
      return std::isnan(number->real) ? 1 : std::hash<double>()(number->real);
    }
  }
  return std::hash<uint64_t>()(static_cast<uint64_t>(integer) * 0x9E3779B97F4A7C15u);
}

}  // namespace

const BQRuntimeClass kNumberClass = {0,          "BQNumber", nullptr, nullptr, nullptr, equalNumbers,
                                     hashNumber, nullptr,    nullptr};

}  // namespace bq

BQTypeID BQNumberGetTypeID(void) {
  return bq::kNumberTypeID;
}

const BQNumber* BQNumberCreate(BQNumberType type, const void* value) {
  if (value == nullptr || type < kBQNumberSInt8Type || type > kBQNumberIndexType) return nullptr;
  BQNumber* number = bq::makeObject<BQNumber>(bq::kNumberTypeID, type);
  bq::readValue(number, type, value);
  return number;
}

BQNumberType BQNumberGetType(const BQNumber* number) {
  return bq::isInstance(number, bq::kNumberTypeID) ? number->type() : static_cast<BQNumberType>(0);
}

bool BQNumberIsFloatType(const BQNumber* number) {
  return bq::isInstance(number, bq::kNumberTypeID) && number->isFloat();
}

bool BQNumberGetValue(const BQNumber* number, BQNumberType type, void* value) {
  if (value == nullptr || !bq::isInstance(number, bq::kNumberTypeID)) return false;
  switch (type) {
    case kBQNumberSInt8Type:
    case kBQNumberCharType:
      return bq::storeInteger<int8_t>(number, value);
    case kBQNumberSInt16Type:
    case kBQNumberShortType:
      return bq::storeInteger<int16_t>(number, value);
    case kBQNumberSInt32Type:
    case kBQNumberIntType:
      return bq::storeInteger<int32_t>(number, value);
    case kBQNumberSInt64Type:
    case kBQNumberLongType:
    case kBQNumberLongLongType:
    case kBQNumberIndexType:
      return bq::storeInteger<int64_t>(number, value);
    case kBQNumberFloat32Type:
    case kBQNumberFloatType:
      return bq::storeReal<float>(number, value);
    case kBQNumberFloat64Type:
    case kBQNumberDoubleType:
      return bq::storeReal<double>(number, value);
  }
  return false;
}

BQComparisonResult BQNumberCompare(const BQNumber* first, const BQNumber* second) {
  bool firstIs = bq::isInstance(first, bq::kNumberTypeID),
       secondIs = bq::isInstance(second, bq::kNumberTypeID);
  if (!firstIs || !secondIs) return bq::order(secondIs, firstIs);
  if (first->isFloat() && second->isFloat()) return bq::compareReals(first->real, second->real);
  if (first->isFloat()) {
    return static_cast<BQComparisonResult>(-bq::compareIntegerWithReal(second->integer, first->real));
  }
  if (second->isFloat()) return bq::compareIntegerWithReal(first->integer, second->real);
  return bq::order(first->integer<second->integer, first->integer> second->integer);
}
