#include "xml/SOAPNamespaces.h"

#include <BQ/BQString.h>

namespace vx {
namespace {

BQ_DEFINE_STATIC_STRING(schemaInstance2001, "http://www.w3.org/2001/XMLSchema-instance");
BQ_DEFINE_STATIC_STRING(schema2001, "http://www.w3.org/2001/XMLSchema");
BQ_DEFINE_STATIC_STRING(schemaInstance1999, "http://www.w3.org/1999/XMLSchema-instance");
BQ_DEFINE_STATIC_STRING(schema1999, "http://www.w3.org/1999/XMLSchema");
BQ_DEFINE_STATIC_STRING(encoding, "http://schemas.xmlsoap.org/soap/encoding/");
BQ_DEFINE_STATIC_STRING(envelope, "http://schemas.xmlsoap.org/soap/envelope/");

}  // namespace

const BQString* const VX_SOAP_2001_SCHEMA_INSTANCE_NAMESPACE = schemaInstance2001;
const BQString* const VX_SOAP_2001_SCHEMA_NAMESPACE = schema2001;
const BQString* const VX_SOAP_2001_ENCODING_NAMESPACE = encoding;
const BQString* const VX_SOAP_2001_ENVELOPE_NAMESPACE = envelope;
const BQString* const VX_SOAP_1999_SCHEMA_INSTANCE_NAMESPACE = schemaInstance1999;
const BQString* const VX_SOAP_1999_SCHEMA_NAMESPACE = schema1999;
const BQString* const VX_SOAP_1999_ENCODING_NAMESPACE = encoding;
const BQString* const VX_SOAP_1999_ENVELOPE_NAMESPACE = envelope;

}  // namespace vx
