#include "xmlrpc/XMLRPCWebServiceMethodInvocation.h"

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "api/base/AgreementKeys.h"
#include "transport/HTTPClosureSource.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"

namespace vx {

XMLRPCWebServiceMethodInvocation::XMLRPCWebServiceMethodInvocation(const BQURL* endpoint,
                                                                   const BQString* methodName)
    : methodName(retain(methodName)) {
  WebServiceMethodInvocation::setServiceEndpoint(endpoint);
}

XMLRPCWebServiceMethodInvocation::XMLRPCWebServiceMethodInvocation(const BQDictionary* agreement)
    : WebServiceMethodInvocation(agreement),
      methodName(retain(getAgreementEntry<BQString>(agreement, kAgreementMethodName, BQStringGetTypeID()))) {}

BQDictionary* XMLRPCWebServiceMethodInvocation::copyAgreement() {
  BQDictionary* agreement = BQDictionaryCreateMutable(0, kBQDictionaryCopyStringKeys);
  BQDictionarySetValue(agreement, kAgreementProtocolType, kVXXMLRPCProtocol);
  BQDictionarySetValue(agreement, kAgreementMethodName, methodName.get());
  populateAgreement(agreement);
  return agreement;
}

const BQData* XMLRPCWebServiceMethodInvocation::constructMessage(const BQString**) {
  XMLRPCProtocolHandler handler;
  handler.setParentSerializer(this);
  /* An override may set other ones. */
  auto parameters = retain(params.get());
  auto order = retain(paramOrder.get());
  return handler.createRequest(methodName.get(), parameters.get(), order.get(), nullptr);
}

void XMLRPCWebServiceMethodInvocation::parseReply(WebServiceResult* result, const BQTree* tree) {
  XMLRPCProtocolHandler handler;
  handler.setParentSerializer(this);
  handler.parseReply(result, tree);
}

VXRunLoopSource* XMLRPCWebServiceMethodInvocation::createRunLoopSource() {
  return new HTTPClosureSource(this, getServiceURL());
}

}  // namespace vx
