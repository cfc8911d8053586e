/* What every object can do: be retained, released, compared, hashed and described. */
#ifndef BQ_OBJECT_H
#define BQ_OBJECT_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/**
 * Adds a reference to `object` and returns it. Null is returned as it is. Constant objects are
 * immortal and are not counted. May be called on any thread.
 */
BQ_EXPORT BQTypeRef BQRetain(BQTypeRef object);

/**
 * Drops a reference to `object`; the last one destroys it. Null is ignored. May be called on any
 * thread; the destruction happens on the thread that dropped the last reference.
 */
BQ_EXPORT void BQRelease(BQTypeRef object);

/** The current number of references; a hint where threads share the object. 0 for null. */
BQ_EXPORT BQIndex BQGetRetainCount(BQTypeRef object);

/** The class of `object`; 0 for null. */
BQ_EXPORT BQTypeID BQGetTypeID(BQTypeRef object);

/** The name of a class, owned by the caller; null for an identifier that is not registered. */
BQ_EXPORT const BQString* BQCopyTypeIDDescription(BQTypeID typeID);

/**
 * Whether two objects have the same content: values of one class compare by content (numbers of
 * different number types too), everything else by identity. Two nulls are equal. Containers that
 * are nested deeper than 512 levels compare by identity below that level.
 */
BQ_EXPORT bool BQEqual(BQTypeRef first, BQTypeRef second);

/** A hash that is the same for equal objects, within one process. 0 for null. */
BQ_EXPORT BQHashCode BQHash(BQTypeRef object);

/**
 * A readable text for `object`, owned by the caller: a string gives itself, containers their
 * elements, null the text "(null)". What is nested deeper than 512 levels shows as "...".
 */
BQ_EXPORT const BQString* BQCopyDescription(BQTypeRef object);

/**
 * Writes the description of `object` and a line end to the standard error stream, with escapes in place of
 * control characters as BQStringCreateForDisplay makes them; line feeds and tabs stay.
 */
BQ_EXPORT void BQShow(BQTypeRef object);

BQ_EXTERN_C_END

#endif
