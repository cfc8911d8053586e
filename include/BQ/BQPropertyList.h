/*
 * XML property lists: a text form for dictionaries with string keys, arrays, strings, numbers,
 * booleans, dates and data.
 */
#ifndef BQ_PROPERTY_LIST_H
#define BQ_PROPERTY_LIST_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/**
 * The XML text of a value in UTF-8, owned by the caller: the XML declaration, then `<plist
 * version="1.0">` around dict, array, string, integer, real, true, false, date and data elements.
 * Null if the value, or one inside it, is of another class, a key is no string, a string holds a
 * character that XML 1.0 cannot hold, a date is beyond the calendar, or elements, `<plist>` included,
 * would be nested deeper than 512 levels.
 */
BQ_EXPORT const BQData* BQPropertyListCreateXMLData(BQTypeRef value);

/**
 * The value of an XML property list, immutable, owned by the caller. Null if the data is none.
 * `*error`, if not null, then receives a message that the caller owns. Any bytes are safe.
 */
BQ_EXPORT BQTypeRef BQPropertyListCreateFromXMLData(const BQData* data, const BQString** error);

BQ_EXTERN_C_END

#endif
