#include "soap/SOAPWebServiceMethodInvocation.h"

#include "soap/SOAPProtocolHandler.h"
#include "transport/HTTPClosureSource.h"

namespace vx {

SOAPWebServiceMethodInvocation::SOAPWebServiceMethodInvocation(const BQString* protocol,
                                                               const BQURL* endpoint,
                                                               const BQString* methodName)
    : methodName_(retain(methodName)), protocol_(retain(protocol)) {
  WebServiceMethodInvocation::setServiceEndpoint(endpoint);
}

const BQData* SOAPWebServiceMethodInvocation::constructMessage(const BQString**) {
  SOAPProtocolHandler handler(protocol_.get());
  handler.setParentSerializer(this);
  return handler.createRequest(methodName_.get(), params(), paramOrder(), nullptr);
}

void SOAPWebServiceMethodInvocation::parseReply(WebServiceResult* result, const BQTree* tree) {
  SOAPProtocolHandler handler(protocol_.get());
  handler.setParentSerializer(this);
  handler.parseReply(result, methodName_.get(), tree);
}

VXRunLoopSource* SOAPWebServiceMethodInvocation::createRunLoopSource() {
  return new HTTPClosureSource(this, getServiceURL());
}

}  // namespace vx
