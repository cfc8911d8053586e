#include "xml/SOAPNamespaces.h"

#include <BQ/BQString.h>

namespace vx {

BQ_DEFINE_STRING(VX_SOAP_2001_SCHEMA_INSTANCE_NAMESPACE, "http://www.w3.org/2001/XMLSchema-instance");
BQ_DEFINE_STRING(VX_SOAP_2001_SCHEMA_NAMESPACE, "http://www.w3.org/2001/XMLSchema");
BQ_DEFINE_STRING(VX_SOAP_2001_ENCODING_NAMESPACE, "http://schemas.xmlsoap.org/soap/encoding/");
BQ_DEFINE_STRING(VX_SOAP_2001_ENVELOPE_NAMESPACE, "http://schemas.xmlsoap.org/soap/envelope/");
BQ_DEFINE_STRING(VX_SOAP_1999_SCHEMA_INSTANCE_NAMESPACE, "http://www.w3.org/1999/XMLSchema-instance");
BQ_DEFINE_STRING(VX_SOAP_1999_SCHEMA_NAMESPACE, "http://www.w3.org/1999/XMLSchema");
BQ_DEFINE_STRING(VX_SOAP_1999_ENCODING_NAMESPACE, "http://schemas.xmlsoap.org/soap/encoding/");
BQ_DEFINE_STRING(VX_SOAP_1999_ENVELOPE_NAMESPACE, "http://schemas.xmlsoap.org/soap/envelope/");

}  // namespace vx
