/* Numbers, which remember the number type that they were made from. */
#ifndef BQ_NUMBER_H
#define BQ_NUMBER_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** The C type behind a number. The codes are stable. */
typedef enum BQNumberType {
  /** int8_t. */
  kBQNumberSInt8Type = 1,
  /** int16_t. */
  kBQNumberSInt16Type = 2,
  /** int32_t. */
  kBQNumberSInt32Type = 3,
  /** int64_t. */
  kBQNumberSInt64Type = 4,
  /** A float of 32 bits. */
  kBQNumberFloat32Type = 5,
  /** A double of 64 bits. */
  kBQNumberFloat64Type = 6,
  /** char, taken as signed. */
  kBQNumberCharType = 7,
  /** short. */
  kBQNumberShortType = 8,
  /** int. */
  kBQNumberIntType = 9,
  /** long. */
  kBQNumberLongType = 10,
  /** long long. */
  kBQNumberLongLongType = 11,
  /** float. */
  kBQNumberFloatType = 12,
  /** double. */
  kBQNumberDoubleType = 13,
  /** BQIndex. */
  kBQNumberIndexType = 14
} BQNumberType;

/** The identifier of the number class. */
BQ_EXPORT BQTypeID BQNumberGetTypeID(void);

/**
 * A new number, owned by the caller, with the value that `value` points to, read as `type`. Null
 * for an unknown type or a null pointer.
 */
BQ_EXPORT const BQNumber* BQNumberCreate(BQNumberType type, const void* value);

/** The type that the number was made with. 0 for anything that is not a number. */
BQ_EXPORT BQNumberType BQNumberGetType(const BQNumber* number);

/** Whether the number was made with a floating type. */
BQ_EXPORT bool BQNumberIsFloatType(const BQNumber* number);

/**
 * Writes the number to `value` as `type` and tells whether it kept its value. An integer type
 * holds a value exactly or not at all: what does not fit is truncated toward zero, clamped to the
 * type's range (NaN becomes 0), and answered with false. A floating type rounds, and answers false
 * only when a finite value becomes infinite. For anything that is not a number, nothing is written
 * and the answer is false.
 */
BQ_EXPORT bool BQNumberGetValue(const BQNumber* number, BQNumberType type, void* value);

/**
 * Compares by value, across number types, exactly. NaN is equal to itself and below all other numbers; null
 * is below every number.
 */
BQ_EXPORT BQComparisonResult BQNumberCompare(const BQNumber* first, const BQNumber* second);

BQ_EXTERN_C_END

#endif
