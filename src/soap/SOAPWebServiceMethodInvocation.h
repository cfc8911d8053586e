/* A SOAP method invocation. */
#ifndef VX_SOAP_SOAP_WEB_SERVICE_METHOD_INVOCATION_H
#define VX_SOAP_SOAP_WEB_SERVICE_METHOD_INVOCATION_H

#include "api/base/WebServiceMethodInvocation.h"

namespace vx {

class SOAPWebServiceMethodInvocation : public WebServiceMethodInvocation {
 public:
  /* One of the two SOAP constants; the endpoint and the method name may be null. */
  SOAPWebServiceMethodInvocation(const BQString* protocol, const BQURL* endpoint, const BQString* methodName);
  /* From a serialized form. */
  SOAPWebServiceMethodInvocation(const BQString* protocol, const BQDictionary* agreement);

  BQDictionary* copyAgreement() override;
  const BQData* constructMessage(const BQString** outContentType) override;
  void parseReply(WebServiceResult* result, const BQTree* tree) override;
  VXRunLoopSource* createRunLoopSource() override;

 private:
  Owned<const BQString> methodName;
  Owned<const BQString> protocol;
};

}  // namespace vx

#endif
