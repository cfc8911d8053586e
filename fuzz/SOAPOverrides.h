/* The handlers of both generations of SOAP, with functions of the caller's for some values. */
#ifndef FUZZ_SOAP_OVERRIDES_H
#define FUZZ_SOAP_OVERRIDES_H

#include <VX/VX.h>

#include "Fuzz.h"

namespace fuzz {

/* Answers the element's own name, and for one that has no child leaves it to the library. */
inline BQTypeRef readAsName(VXMethodInvocationRef, const BQTree* element, const BQTree*, void*) {
  if (BQTreeGetFirstChild(element) == nullptr) return nullptr;
  return BQStringCreateCopy(BQXMLNodeGetString(BQXMLTreeGetNode(element)));
}

/* Writes true values; false ones are left to the library. */
inline const BQString* writeTruth(VXMethodInvocationRef, BQTypeRef value, void*) {
  return value == kBQBooleanTrue ? BQSTR("<%@>yes</%@>") : nullptr;
}

inline VXProtocolHandlerRef makeSOAPHandler(const BQString* protocol) {
  VXProtocolHandlerRef handler = VXProtocolHandlerCreate(nullptr, protocol);
  VXProtocolHandlerSetDeserializationOverride(handler, BQSTR("urn:o"), BQSTR("custom"), readAsName, nullptr);
  VXProtocolHandlerSetDeserializationOverride(handler, BQSTR("*"), BQSTR("anywhere"), readAsName, nullptr);
  VXProtocolHandlerSetDeserializationOverride(handler, nullptr, BQSTR("nowhere"), readAsName, nullptr);
  VXProtocolHandlerSetSerializationOverride(handler, BQBooleanGetTypeID(), writeTruth, nullptr);
  return handler;
}

/* One for each generation. They read alike. */
inline VXProtocolHandlerRef olderHandler() {
  static VXProtocolHandlerRef handler = makeSOAPHandler(kVXSOAP1999Protocol);
  return handler;
}
inline VXProtocolHandlerRef newerHandler() {
  static VXProtocolHandlerRef handler = makeSOAPHandler(kVXSOAP2001Protocol);
  return handler;
}

}  // namespace fuzz

#endif
