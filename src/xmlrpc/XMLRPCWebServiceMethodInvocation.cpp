#include "xmlrpc/XMLRPCWebServiceMethodInvocation.h"

#include "transport/HTTPClosureSource.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"

namespace vx {

XMLRPCWebServiceMethodInvocation::XMLRPCWebServiceMethodInvocation(const BQURL* endpoint,
                                                                   const BQString* methodName)
    : methodName_(retain(methodName)) {
  WebServiceMethodInvocation::setServiceEndpoint(endpoint);
}

const BQData* XMLRPCWebServiceMethodInvocation::constructMessage(const BQString**) {
  XMLRPCProtocolHandler handler;
  handler.setParentSerializer(this);
  return handler.createRequest(methodName_.get(), params(), paramOrder(), nullptr);
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
