/* URLs (RFC 3986). */
#ifndef BQ_URL_H
#define BQ_URL_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** The identifier of the URL class. URLs compare by their text. */
BQ_EXPORT BQTypeID BQURLGetTypeID(void);

/**
 * A URL from its text, resolved against `base` (may be null) if it is relative. The text is kept
 * as given. Null for null, and for a text that is no URL: blanks, control characters, a malformed
 * port or host. Owned by the caller.
 */
BQ_EXPORT const BQURL* BQURLCreateWithString(const BQString* text, const BQURL* base);

/** The text of the URL, as given if it was absolute; borrowed. Null for null. */
BQ_EXPORT const BQString* BQURLGetString(const BQURL* url);

/**
 * The text of the URL for messages and logs, owned by the caller: "***" is in place of user and password,
 * and of query and fragment, which may hold a token. Null for null.
 */
BQ_EXPORT const BQString* BQURLCopyDisplayString(const BQURL* url);

/** The scheme in lower case, owned by the caller; null if there is none. */
BQ_EXPORT const BQString* BQURLCopyScheme(const BQURL* url);

/**
 * The host name without brackets, percent escapes decoded, owned by the caller; null if there is
 * none or it is empty.
 */
BQ_EXPORT const BQString* BQURLCopyHostName(const BQURL* url);

/** The port number that the text gives; -1 if it gives none, and for null. */
BQ_EXPORT int32_t BQURLGetPortNumber(const BQURL* url);

/** The path with its percent escapes, "/" at least, without query; owned by the caller. */
BQ_EXPORT const BQString* BQURLCopyPath(const BQURL* url);

BQ_EXTERN_C_END

#endif
