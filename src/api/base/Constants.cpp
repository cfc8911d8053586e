#include <VX/VXConstants.h>

#include <BQ/BQString.h>

/* Defines an exported constant: a static string and the exported pointer to it. */
#define VX_DEFINE_CONSTANT(name, text)       \
  BQ_DEFINE_STATIC_STRING(name##Text, text); \
  const BQString* const name = name##Text

VX_DEFINE_CONSTANT(kVXXMLRPCProtocol, "XML-RPC");
VX_DEFINE_CONSTANT(kVXSOAP1999Protocol, "SOAP-1999");
VX_DEFINE_CONSTANT(kVXSOAP2001Protocol, "SOAP-2001");

VX_DEFINE_CONSTANT(kVXMethodInvocationResult, "/Result");
VX_DEFINE_CONSTANT(kVXFaultString, "/FaultString");
VX_DEFINE_CONSTANT(kVXFaultCode, "/FaultCode");
VX_DEFINE_CONSTANT(kVXFaultExtra, "/FaultExtra");
VX_DEFINE_CONSTANT(kVXHTTPResponseMessage, "/kVXHTTPResponseMessage");

VX_DEFINE_CONSTANT(kVXNetworkStreamFaultString, "/BQStreamFault");
VX_DEFINE_CONSTANT(kVXStreamErrorMessage, "msg");
VX_DEFINE_CONSTANT(kVXStreamErrorDomain, "domain");
VX_DEFINE_CONSTANT(kVXStreamErrorError, "error");

VX_DEFINE_CONSTANT(kVXHTTPMessage, "/kVXHTTPMessage");
VX_DEFINE_CONSTANT(kVXPostingMethod, "/VXPostingMethod");
VX_DEFINE_CONSTANT(kVXHTTPVersion, "/VXHTTPVersion");
VX_DEFINE_CONSTANT(kVXHTTPFollowsRedirects, "/VXHTTPFollowsRedirects");
VX_DEFINE_CONSTANT(kVXHTTPProxy, "/VXHTTPProxy");
VX_DEFINE_CONSTANT(kVXHTTPExtraHeaders, "/VXHTTPExtraHeaders");
VX_DEFINE_CONSTANT(kVXMethodInvocationTimeoutValue, "kVXMethodInvocationTimeoutValue");

VX_DEFINE_CONSTANT(kVXAuthInfo, "/VXHTTPAuthInfo");
VX_DEFINE_CONSTANT(kVXAuthInfo_user, "username");
VX_DEFINE_CONSTANT(kVXAuthInfo_password, "password");
VX_DEFINE_CONSTANT(kVXAuthInfo_authScheme, "authScheme");
VX_DEFINE_CONSTANT(kVXAuthInfo_forProxy, "forProxy");

VX_DEFINE_CONSTANT(kVXDebugOutgoingHeaders, "/VXDebugOutHeaders");
VX_DEFINE_CONSTANT(kVXDebugOutgoingBody, "/VXDebugOutBody");
VX_DEFINE_CONSTANT(kVXDebugIncomingHeaders, "/VXDebugInHeaders");
VX_DEFINE_CONSTANT(kVXDebugIncomingBody, "/VXDebugInBody");

VX_DEFINE_CONSTANT(kVXSOAPMessageHeaders, "/VXHTTPMessageHeaders");
VX_DEFINE_CONSTANT(kVXSOAPMethodNamespaceURI, "/VXSOAPMethodNamespaceURI");
VX_DEFINE_CONSTANT(kVXSOAPBodyEncodingStyle, "/VXSOAPBodyEncodingStyle");
VX_DEFINE_CONSTANT(kVXSOAPStyleRPC, "rpc");
VX_DEFINE_CONSTANT(kVXSOAPStyleDoc, "doc");
VX_DEFINE_CONSTANT(kVXMethodInvocationResultParameterName, "/VXResultParamName");

VX_DEFINE_CONSTANT(kVXRecordParameterOrder, "/VXRecordParamOrder");
VX_DEFINE_CONSTANT(kVXRecordNamespaceURI, "/VXRecordNamespaceURI");
VX_DEFINE_CONSTANT(kVXRecordType, "/VXRecordType");
