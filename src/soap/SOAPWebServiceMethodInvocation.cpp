#include "soap/SOAPWebServiceMethodInvocation.h"

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "api/base/AgreementKeys.h"
#include "soap/SOAPProtocolHandler.h"
#include "transport/HTTPClosureSource.h"

namespace vx {

SOAPWebServiceMethodInvocation::SOAPWebServiceMethodInvocation(const BQString* protocol,
                                                               const BQURL* endpoint,
                                                               const BQString* methodName)
    : methodName(retain(methodName)), protocol(retain(protocol)) {
  WebServiceMethodInvocation::setServiceEndpoint(endpoint);
}

SOAPWebServiceMethodInvocation::SOAPWebServiceMethodInvocation(const BQString* protocol,
                                                               const BQDictionary* agreement)
    : WebServiceMethodInvocation(agreement),
      methodName(retain(getAgreementEntry<BQString>(agreement, kAgreementMethodName, BQStringGetTypeID()))),
      protocol(retain(protocol)) {}

BQDictionary* SOAPWebServiceMethodInvocation::copyAgreement() {
  BQDictionary* agreement = BQDictionaryCreateMutable(0, kBQDictionaryCopyStringKeys);
  BQDictionarySetValue(agreement, kAgreementProtocolType, protocol.get());
  BQDictionarySetValue(agreement, kAgreementMethodName, methodName.get());
  populateAgreement(agreement);
  return agreement;
}

const BQData* SOAPWebServiceMethodInvocation::constructMessage(const BQString**) {
  SOAPProtocolHandler handler(protocol.get());
  handler.setParentSerializer(this);
  /* An override may set other ones. */
  auto parameters = retain(params.get());
  auto order = retain(paramOrder.get());
  return handler.createRequest(methodName.get(), parameters.get(), order.get(), nullptr);
}

void SOAPWebServiceMethodInvocation::parseReply(WebServiceResult* result, const BQTree* tree) {
  SOAPProtocolHandler handler(protocol.get());
  handler.setParentSerializer(this);
  handler.parseReply(result, methodName.get(), tree);
}

VXRunLoopSource* SOAPWebServiceMethodInvocation::createRunLoopSource() {
  return new HTTPClosureSource(this, getServiceURL());
}

}  // namespace vx
