/*
 * HTTP requests and responses (RFC 9110, RFC 9112). Header names are compared without regard to
 * case and keep the order in which they were set.
 */
#ifndef BQ_HTTP_MESSAGE_H
#define BQ_HTTP_MESSAGE_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** "HTTP/1.0". */
BQ_EXPORT extern const BQString* const kBQHTTPVersion1_0;
/** "HTTP/1.1". */
BQ_EXPORT extern const BQString* const kBQHTTPVersion1_1;

/** The identifier of the message class. Messages compare by identity. */
BQ_EXPORT BQTypeID BQHTTPMessageGetTypeID(void);

/**
 * A new request without headers or body, owned by the caller. The version is compared by text
 * ("HTTP/1.0", "HTTP/1.1"; null means 1.1). Null for a null or relative URL, a method that is no
 * HTTP token, or another version. An argument of another class is refused the same way.
 */
BQ_EXPORT BQHTTPMessage* BQHTTPMessageCreateRequest(const BQString* method, const BQURL* url,
                                                    const BQString* version);

/**
 * A new response from its status line ("HTTP/1.1 404 Not Found"), owned by the caller. Null if it
 * is none.
 */
BQ_EXPORT BQHTTPMessage* BQHTTPMessageCreateResponse(const BQString* statusLine);

/** An independent copy, owned by the caller; the body is shared. Null for null or another class. */
BQ_EXPORT BQHTTPMessage* BQHTTPMessageCreateCopy(const BQHTTPMessage* message);

/** Whether the message is a request. */
BQ_EXPORT bool BQHTTPMessageIsRequest(const BQHTTPMessage* message);

/** The method of a request, owned by the caller; null for a response. */
BQ_EXPORT const BQString* BQHTTPMessageCopyRequestMethod(const BQHTTPMessage* message);

/** The URL of a request, owned by the caller; null for a response. */
BQ_EXPORT const BQURL* BQHTTPMessageCopyRequestURL(const BQHTTPMessage* message);

/** The version, one of the constants above or what the peer sent; owned by the caller. */
BQ_EXPORT const BQString* BQHTTPMessageCopyVersion(const BQHTTPMessage* message);

/** The status code of a response; 0 for a request. */
BQ_EXPORT BQIndex BQHTTPMessageGetResponseStatusCode(const BQHTTPMessage* message);

/**
 * The status line of a response as it was sent, without the line end; owned by the caller. Null for
 * a request.
 */
BQ_EXPORT const BQString* BQHTTPMessageCopyResponseStatusLine(const BQHTTPMessage* message);

/** Sets the body; the data is retained, and copied first if it is mutable. Null removes it. */
BQ_EXPORT void BQHTTPMessageSetBody(BQHTTPMessage* message, const BQData* body);

/** The body, owned by the caller; null if there is none. */
BQ_EXPORT const BQData* BQHTTPMessageCopyBody(const BQHTTPMessage* message);

/**
 * Sets a header in place of all of that name; a null value removes them. False, and no change,
 * for a name that is no HTTP token and for a value with CR, LF or NUL, or values of other classes.
 */
BQ_EXPORT bool BQHTTPMessageSetHeaderFieldValue(BQHTTPMessage* message, const BQString* name,
                                                const BQString* value);

/** Adds a header behind those already there, also those of its name. Refuses as above. */
BQ_EXPORT bool BQHTTPMessageAddHeaderFieldValue(BQHTTPMessage* message, const BQString* name,
                                                const BQString* value);

/**
 * The value of a header, several of one name joined with ", ", owned by the caller; null if there
 * is none.
 */
BQ_EXPORT const BQString* BQHTTPMessageCopyHeaderFieldValue(const BQHTTPMessage* message,
                                                            const BQString* name);

/** All headers in order, names as first written, values as above; owned by the caller. Null for null. */
BQ_EXPORT const BQDictionary* BQHTTPMessageCopyAllHeaderFields(const BQHTTPMessage* message);

BQ_EXTERN_C_END

#endif
