/* Data as base64 text (RFC 2045). */
#ifndef VX_XML_BASE64_H
#define VX_XML_BASE64_H

#include <BQ/BQBase.h>

#include <cstddef>
#include <string_view>

namespace vx {

/*
 * The base64 text of data, broken into lines of 76 - 4 * indent characters (an indent above 8
 * counts as 8). Before each line stand indent / 2 tabs, behind each full one a line feed. Owned by
 * the caller.
 */
const BQString* encodeBinaryData(const BQData* data, int indent);

/* Appends that text to mutable data. */
void _XMLPlistAppendDataUsingBase64(BQData* out, const BQData* data, long indent);

/* The length of that text, and the text itself written to memory with that much room; returns its end. */
size_t base64Length(const BQData* data, int indent);
char* writeBase64(const BQData* data, int indent, char* out);

/*
 * The data of a base64 text, owned by the caller: what is no base64 character is skipped, "<" ends
 * the text, an incomplete group is dropped. Null if the text holds a character beyond ASCII.
 */
const BQData* decodeBinaryData(std::string_view text);

/* The same from bytes; those beyond ASCII are skipped. */
const BQData* __BQPLDataDecode(const char* begin, const char* end);

}  // namespace vx

#endif
