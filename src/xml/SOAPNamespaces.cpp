#include "xml/SOAPNamespaces.h"

#include "values/ConstantString.h"

namespace vx {

VX_DEFINE_STRING(VX_SOAP_2001_SCHEMA_INSTANCE_NAMESPACE, "http://www.w3.org/2001/XMLSchema-instance");
VX_DEFINE_STRING(VX_SOAP_2001_SCHEMA_NAMESPACE, "http://www.w3.org/2001/XMLSchema");
VX_DEFINE_STRING(VX_SOAP_2001_ENCODING_NAMESPACE, "http://schemas.xmlsoap.org/soap/encoding/");
VX_DEFINE_STRING(VX_SOAP_2001_ENVELOPE_NAMESPACE, "http://schemas.xmlsoap.org/soap/envelope/");
VX_DEFINE_STRING(VX_SOAP_1999_SCHEMA_INSTANCE_NAMESPACE, "http://www.w3.org/1999/XMLSchema-instance");
VX_DEFINE_STRING(VX_SOAP_1999_SCHEMA_NAMESPACE, "http://www.w3.org/1999/XMLSchema");
VX_DEFINE_STRING(VX_SOAP_1999_ENCODING_NAMESPACE, "http://schemas.xmlsoap.org/soap/encoding/");
VX_DEFINE_STRING(VX_SOAP_1999_ENVELOPE_NAMESPACE, "http://schemas.xmlsoap.org/soap/envelope/");

}  // namespace vx
