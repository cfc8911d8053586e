/* The namespaces of SOAP 1.1 and of XML Schema in its two generations. */
#ifndef VX_XML_SOAP_NAMESPACES_H
#define VX_XML_SOAP_NAMESPACES_H

#include <BQ/BQBase.h>

namespace vx {

extern const BQString* const VX_SOAP_2001_SCHEMA_INSTANCE_NAMESPACE;
extern const BQString* const VX_SOAP_2001_SCHEMA_NAMESPACE;
extern const BQString* const VX_SOAP_2001_ENCODING_NAMESPACE;
extern const BQString* const VX_SOAP_2001_ENVELOPE_NAMESPACE;
extern const BQString* const VX_SOAP_1999_SCHEMA_INSTANCE_NAMESPACE;
extern const BQString* const VX_SOAP_1999_SCHEMA_NAMESPACE;
extern const BQString* const VX_SOAP_1999_ENCODING_NAMESPACE;
extern const BQString* const VX_SOAP_1999_ENVELOPE_NAMESPACE;

}  // namespace vx

#endif
