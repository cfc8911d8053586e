/* The kinds of values that the protocols tell apart. */
#ifndef VX_TYPES_H
#define VX_TYPES_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** The kind of a value. */
typedef enum VXTypeID {
  /** Anything that is none of the others. */
  kVXTypeUnknown = 0,
  /** The null object. */
  kVXTypeNull = 1,
  kVXTypeBoolean = 2,
  /** A number that was not made with a floating type. */
  kVXTypeInteger = 3,
  /** A number that was made with a floating type. */
  kVXTypeDouble = 4,
  kVXTypeString = 5,
  kVXTypeDate = 6,
  kVXTypeData = 7,
  kVXTypeArray = 8,
  kVXTypeDictionary = 9
} VXTypeID;

/** The kind of a value, which must not be null. Any thread. */
BQ_EXPORT VXTypeID VXGetVXTypeIDFromBQType(BQTypeRef value);

/** The class of the values of a kind; 0 for kVXTypeUnknown and for numbers that are no kind. Any thread. */
BQ_EXPORT BQTypeID VXGetBQTypeIDFromVXTypeID(VXTypeID kind);

BQ_EXTERN_C_END

#endif
