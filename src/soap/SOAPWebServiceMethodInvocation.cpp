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

/* No request is written yet, so that no reply arrives. */
void SOAPWebServiceMethodInvocation::parseReply(WebServiceResult*, const BQTree*) {}

VXRunLoopSource* SOAPWebServiceMethodInvocation::createRunLoopSource() {
  return new HTTPClosureSource(this, getServiceURL());
}

}  // namespace vx
