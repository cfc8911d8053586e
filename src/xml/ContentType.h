/* What the Content-Type of a reply says. */
#ifndef VX_XML_CONTENT_TYPE_H
#define VX_XML_CONTENT_TYPE_H

#include <BQ/BQBase.h>

namespace vx {

/* The encoding that the charset parameter names: UTF-8 without one, ASCII for an unknown one. */
unsigned long getResponseCharset(const BQHTTPMessage* response);

/* Whether the reply is some kind of XML, and whether it is text; without a type it is text. */
void checkForXMLContent(const BQHTTPMessage* response, unsigned char* outIsXML, unsigned char* outIsText);

}  // namespace vx

#endif
