/* Small makers of platform values. */
#ifndef VX_VALUES_CONSTRUCTION_H
#define VX_VALUES_CONSTRUCTION_H

#include <BQ/BQBase.h>

namespace vx {

/* A new string from a format in the legacy Western encoding (see BQStringCreateWithFormat). */
const BQString* bqCreateString(const char* format, va_list arguments);

/* A new mutable array: the values of `base` (may be null), then those listed, up to a null pointer. */
BQArray* bqTypeCreateArray(const BQArray* base, ...);

/*
 * A new mutable dictionary: the pairs of `base` (may be null), then those listed, key first, up to
 * a null pointer. A key without a value is dropped.
 */
BQDictionary* bqTypeCreateDictionary(const BQDictionary* base, ...);

/* The keys of a dictionary; the shared empty array if there are none. Owned by the caller. */
const BQArray* copyDictionaryKeys(const BQDictionary* dictionary);

/* The shared number of an integer from -3 to 11, borrowed; null for any other. */
const BQNumber* internedInt(int value);

}  // namespace vx

#endif
