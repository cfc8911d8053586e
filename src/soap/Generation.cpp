#include "soap/Generation.h"

#include <BQ/BQString.h>
#include <VX/VXConstants.h>

#include "xml/SOAPNamespaces.h"

namespace vx {
namespace {

const Generation& generation1999() {
  static const Generation generation = {kVXSOAP1999Protocol,
                                        VX_SOAP_1999_SCHEMA_NAMESPACE,
                                        VX_SOAP_1999_SCHEMA_INSTANCE_NAMESPACE,
                                        VX_SOAP_1999_ENCODING_NAMESPACE,
                                        VX_SOAP_1999_ENVELOPE_NAMESPACE,
                                        BQSTR("ur-type"),
                                        BQSTR("timeInstant"),
                                        BQSTR("base64"),
                                        false,
                                        false};
  return generation;
}

const Generation& generation2001() {
  static const Generation generation = {kVXSOAP2001Protocol,
                                        VX_SOAP_2001_SCHEMA_NAMESPACE,
                                        VX_SOAP_2001_SCHEMA_INSTANCE_NAMESPACE,
                                        VX_SOAP_2001_ENCODING_NAMESPACE,
                                        VX_SOAP_2001_ENVELOPE_NAMESPACE,
                                        BQSTR("anyType"),
                                        BQSTR("dateTime"),
                                        BQSTR("base64Binary"),
                                        true,
                                        true};
  return generation;
}

}  // namespace

BQ_DEFINE_STRING(kPlaceholderMethodNamespace, "urn:vx:method");

const Generation* generationOf(const BQString* protocol) {
  if (protocol == kVXSOAP1999Protocol) return &generation1999();
  if (protocol == kVXSOAP2001Protocol) return &generation2001();
  return nullptr;
}

}  // namespace vx
