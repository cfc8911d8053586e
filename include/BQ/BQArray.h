/* Arrays of retained objects. */
#ifndef BQ_ARRAY_H
#define BQ_ARRAY_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** The identifier of the array class. */
BQ_EXPORT BQTypeID BQArrayGetTypeID(void);

/**
 * A new immutable array of `count` objects, each retained, owned by the caller. Slots may be null.
 * Null if the count is negative.
 */
BQ_EXPORT const BQArray* BQArrayCreate(const BQTypeRef* values, BQIndex count);

/** An immutable shallow copy, owned by the caller; an immutable array is shared. Null for null. */
BQ_EXPORT const BQArray* BQArrayCreateCopy(const BQArray* array);

/** A new empty mutable array with room for `capacity` objects, owned by the caller; it grows as needed. */
BQ_EXPORT BQArray* BQArrayCreateMutable(BQIndex capacity);

/** A mutable shallow copy with room for at least `capacity` objects, owned by the caller. Null for null. */
BQ_EXPORT BQArray* BQArrayCreateMutableCopy(BQIndex capacity, const BQArray* array);

/** The number of slots; 0 for null. */
BQ_EXPORT BQIndex BQArrayGetCount(const BQArray* array);

/** The object at `index`, borrowed. Null for an empty slot, an index out of range or a null array. */
BQ_EXPORT BQTypeRef BQArrayGetValueAtIndex(const BQArray* array, BQIndex index);

/** Whether an equal object is in the array. */
BQ_EXPORT bool BQArrayContainsValue(const BQArray* array, BQTypeRef value);

/** Appends an object to a mutable array, which retains it; null appends an empty slot. */
BQ_EXPORT void BQArrayAppendValue(BQArray* array, BQTypeRef value);

/** Appends an object and takes over the caller's reference to it. */
BQ_EXPORT void BQArrayAppendOwnedValue(BQArray* array, BQTypeRef value);

/** Inserts before `index`; an index out of range is refused without effect. */
BQ_EXPORT void BQArrayInsertValueAtIndex(BQArray* array, BQIndex index, BQTypeRef value);

/** Replaces the object at `index`; an index out of range is refused without effect. */
BQ_EXPORT void BQArraySetValueAtIndex(BQArray* array, BQIndex index, BQTypeRef value);

/** Removes the object at `index`; an index out of range is refused without effect. */
BQ_EXPORT void BQArrayRemoveValueAtIndex(BQArray* array, BQIndex index);

/** Empties a mutable array. */
BQ_EXPORT void BQArrayRemoveAllValues(BQArray* array);

BQ_EXTERN_C_END

#endif
