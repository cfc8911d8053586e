/* The HTTP request of a call. */
#ifndef VX_TRANSPORT_HTTP_REQUEST_H
#define VX_TRANSPORT_HTTP_REQUEST_H

#include <BQ/BQBase.h>

#include "values/Owned.h"

namespace vx {

class WebServiceMethodInvocation;

/* The value of the User-Agent header, borrowed, made once per process. */
const BQString* getUserAgentString();

/* Sets a header of the request, unless the template (may be null) has one of that name. */
void setHeaderFieldValue(const BQHTTPMessage* requestTemplate, BQHTTPMessage* request, const BQString* name,
                         const BQString* value);

/*
 * The request that posts `body` to `url`, with the method, version and headers that the
 * invocation's properties ask for. `contentType` may be null. Null if the request cannot be made.
 */
Owned<BQHTTPMessage> createHTTPRequest(WebServiceMethodInvocation* invocation, const BQURL* url,
                                       const BQData* body, const BQString* contentType);

/* Sets on a stream what the invocation's properties ask for: proxy, redirects, trust, size of the reply. */
void configureStream(WebServiceMethodInvocation* invocation, BQReadStream* stream);

/* The method of an invocation's request: "POST" unless a property says otherwise. Borrowed. */
const BQString* getMethod(WebServiceMethodInvocation* invocation);
/* The HTTP version of its request: 1.1 unless a property says otherwise. Borrowed. */
const BQString* getHttpVersion(WebServiceMethodInvocation* invocation);
/* Whether it follows redirects: yes unless a property says otherwise. */
bool getFollowsRedirects(WebServiceMethodInvocation* invocation);
/* The most seconds that its exchange may take; 0 or less for no limit. */
int32_t getTimeout(WebServiceMethodInvocation* invocation);

}  // namespace vx

#endif
