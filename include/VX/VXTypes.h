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
  /** A boolean. */
  kVXTypeBoolean = 2,
  /** A number that was not made with a floating type. */
  kVXTypeInteger = 3,
  /** A number that was made with a floating type. */
  kVXTypeDouble = 4,
  /** A string. */
  kVXTypeString = 5,
  /** A date. */
  kVXTypeDate = 6,
  /** Data; base64 on the wire. */
  kVXTypeData = 7,
  /** An array. */
  kVXTypeArray = 8,
  /** A dictionary; a structure on the wire. */
  kVXTypeDictionary = 9
} VXTypeID;

/** The kind of a value, which must not be null. Any thread. */
BQ_EXPORT VXTypeID VXGetVXTypeIDFromBQType(BQTypeRef value);

/** The class of the values of a kind; 0 for kVXTypeUnknown and for numbers that are no kind. Any thread. */
BQ_EXPORT BQTypeID VXGetBQTypeIDFromVXTypeID(VXTypeID kind);

BQ_EXTERN_C_END

#endif
