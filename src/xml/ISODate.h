/* Dates as ISO 8601 strings; the conversions themselves are public (VX/VXDate.h). */
#ifndef VX_XML_ISO_DATE_H
#define VX_XML_ISO_DATE_H

#include <BQ/BQBase.h>

#include <cstddef>
#include <string_view>

namespace vx {

/* More than the longest text of a date. */
inline constexpr size_t kISODateRoom = 256;

/* A date as 20050228T13:45:09Z if `compact` is not 0, else as 2005-02-28T13:45:09Z. Owned by the caller. */
const BQString* isoEncodeDate(const BQDate* date, unsigned char compact);

/* Writes that text to memory with kISODateRoom bytes; returns its end. */
char* writeISODate(const BQDate* date, bool compact, char* out);

/* The date of a text, characters beyond ASCII taken for "x"; owned by the caller. */
const BQDate* isoDecodeDate(std::string_view text);

/* Reads two characters as a number, what is no digit as 0; returns the position behind them. */
const char* read2SInt8(const char* p, signed char* out);

}  // namespace vx

#endif
