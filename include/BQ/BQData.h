/* Bytes. */
#ifndef BQ_DATA_H
#define BQ_DATA_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** The identifier of the data class. */
BQ_EXPORT BQTypeID BQDataGetTypeID(void);

/** A new immutable copy of `length` bytes, owned by the caller. Null if the length is negative. */
BQ_EXPORT const BQData* BQDataCreate(const void* bytes, BQIndex length);

/**
 * A view of `length` bytes that stay the caller's: nothing is copied or freed, and the bytes must
 * stay in place and unchanged while the view lives. Owned by the caller.
 */
BQ_EXPORT const BQData* BQDataCreateView(const void* bytes, BQIndex length);

/** Takes over bytes that came from malloc; they are freed with the data. Owned by the caller. */
BQ_EXPORT const BQData* BQDataCreateWithOwnedBytes(void* bytes, BQIndex length);

/** An immutable copy, owned by the caller; immutable data that owns its bytes is shared. Null for null. */
BQ_EXPORT const BQData* BQDataCreateCopy(const BQData* data);

/** New empty mutable data with room for `capacity` bytes, owned by the caller; it grows as needed. */
BQ_EXPORT BQData* BQDataCreateMutable(BQIndex capacity);

/** A mutable copy, owned by the caller. Null for null. */
BQ_EXPORT BQData* BQDataCreateMutableCopy(const BQData* data);

/** The number of bytes; 0 for null. */
BQ_EXPORT BQIndex BQDataGetLength(const BQData* data);

/** The bytes, borrowed until the data is changed or released. Null for null; not null for empty data. */
BQ_EXPORT const uint8_t* BQDataGetBytePtr(const BQData* data);

/** The bytes of mutable data for writing, borrowed until its length changes. Null if it is immutable. */
BQ_EXPORT uint8_t* BQDataGetMutableBytePtr(BQData* data);

/** Appends `length` bytes to mutable data. Does nothing for immutable data. */
BQ_EXPORT void BQDataAppendBytes(BQData* data, const void* bytes, BQIndex length);

/** Cuts mutable data or extends it with zero bytes. Does nothing for immutable data. */
BQ_EXPORT void BQDataSetLength(BQData* data, BQIndex length);

BQ_EXTERN_C_END

#endif
