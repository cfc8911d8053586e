/* An XML-RPC method invocation. */
#ifndef VX_XMLRPC_XMLRPC_WEB_SERVICE_METHOD_INVOCATION_H
#define VX_XMLRPC_XMLRPC_WEB_SERVICE_METHOD_INVOCATION_H

#include "api/base/WebServiceMethodInvocation.h"

namespace vx {

class XMLRPCWebServiceMethodInvocation : public WebServiceMethodInvocation {
 public:
  /* Both may be null. */
  XMLRPCWebServiceMethodInvocation(const BQURL* endpoint, const BQString* methodName);
  /* From a serialized form. */
  explicit XMLRPCWebServiceMethodInvocation(const BQDictionary* agreement);

  BQDictionary* copyAgreement() override;
  const BQData* constructMessage(const BQString** outContentType) override;
  void parseReply(WebServiceResult* result, const BQTree* tree) override;
  VXRunLoopSource* createRunLoopSource() override;

 private:
  Owned<const BQString> methodName;
};

}  // namespace vx

#endif
