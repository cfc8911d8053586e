/* Dates as text (ISO 8601), in UTC. */
#ifndef VX_DATE_H
#define VX_DATE_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/**
 * Writes a date as 2005-02-28T13:45:09Z, or 20050228T13:45:09Z if `compact` is not 0, and a NUL.
 * Fractions of a second are dropped. Null is written as 2001-01-01T00:00:00Z.
 *
 * @param buffer  Receives at most `size` bytes, the NUL included; may be null if `size` is 0.
 * @return The length of the whole text without the NUL, also when it was cut. Any thread.
 */
BQ_EXPORT int vxBQDateToISO8601String(char* buffer, unsigned long size, const BQDate* date,
                                      unsigned char compact);

/**
 * Reads a date: year, month and day with or without dashes, then, each optional, "T", hours, ":",
 * minutes, ":", seconds with or without a fraction, and "Z" or an offset from UTC. What is missing
 * or is no digit reads as 0.
 *
 * @param text    The text, no NUL needed.
 * @param length  Its length in bytes.
 * @return A date, owned by the caller; never null. Any thread.
 */
BQ_EXPORT const BQDate* vxCreateDateFromISO8601(const unsigned char* text, unsigned long length);

BQ_EXTERN_C_END

#endif
