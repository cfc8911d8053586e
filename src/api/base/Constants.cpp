#include <VX/VXConstants.h>

#include "values/ConstantString.h"

VX_DEFINE_STRING(kVXXMLRPCProtocol, "XML-RPC");
VX_DEFINE_STRING(kVXSOAP1999Protocol, "SOAP-1999");
VX_DEFINE_STRING(kVXSOAP2001Protocol, "SOAP-2001");

VX_DEFINE_STRING(kVXMethodInvocationResult, "/Result");
VX_DEFINE_STRING(kVXFaultString, "/FaultString");
VX_DEFINE_STRING(kVXFaultCode, "/FaultCode");
VX_DEFINE_STRING(kVXFaultExtra, "/FaultExtra");
VX_DEFINE_STRING(kVXHTTPResponseMessage, "/kVXHTTPResponseMessage");

VX_DEFINE_STRING(kVXNetworkStreamFaultString, "/BQStreamFault");
VX_DEFINE_STRING(kVXStreamErrorMessage, "msg");
VX_DEFINE_STRING(kVXStreamErrorDomain, "domain");
VX_DEFINE_STRING(kVXStreamErrorError, "error");

VX_DEFINE_STRING(kVXHTTPMessage, "/kVXHTTPMessage");
VX_DEFINE_STRING(kVXPostingMethod, "/VXPostingMethod");
VX_DEFINE_STRING(kVXHTTPVersion, "/VXHTTPVersion");
VX_DEFINE_STRING(kVXHTTPFollowsRedirects, "/VXHTTPFollowsRedirects");
VX_DEFINE_STRING(kVXHTTPProxy, "/VXHTTPProxy");
VX_DEFINE_STRING(kVXHTTPExtraHeaders, "/VXHTTPExtraHeaders");
VX_DEFINE_STRING(kVXMethodInvocationTimeoutValue, "kVXMethodInvocationTimeoutValue");

VX_DEFINE_STRING(kVXAuthInfo, "/VXHTTPAuthInfo");
VX_DEFINE_STRING(kVXAuthInfo_user, "username");
VX_DEFINE_STRING(kVXAuthInfo_password, "password");
VX_DEFINE_STRING(kVXAuthInfo_authScheme, "authScheme");
VX_DEFINE_STRING(kVXAuthInfo_forProxy, "forProxy");

VX_DEFINE_STRING(kVXDebugOutgoingHeaders, "/VXDebugOutHeaders");
VX_DEFINE_STRING(kVXDebugOutgoingBody, "/VXDebugOutBody");
VX_DEFINE_STRING(kVXDebugIncomingHeaders, "/VXDebugInHeaders");
VX_DEFINE_STRING(kVXDebugIncomingBody, "/VXDebugInBody");

VX_DEFINE_STRING(kVXSOAPMessageHeaders, "/VXHTTPMessageHeaders");
VX_DEFINE_STRING(kVXSOAPMethodNamespaceURI, "/VXSOAPMethodNamespaceURI");
VX_DEFINE_STRING(kVXSOAPBodyEncodingStyle, "/VXSOAPBodyEncodingStyle");
VX_DEFINE_STRING(kVXSOAPStyleRPC, "rpc");
VX_DEFINE_STRING(kVXSOAPStyleDoc, "doc");
VX_DEFINE_STRING(kVXMethodInvocationResultParameterName, "/VXResultParamName");

VX_DEFINE_STRING(kVXRecordParameterOrder, "/VXRecordParamOrder");
VX_DEFINE_STRING(kVXRecordNamespaceURI, "/VXRecordNamespaceURI");
VX_DEFINE_STRING(kVXRecordType, "/VXRecordType");
