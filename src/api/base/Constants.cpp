#include <VX/VXConstants.h>

#include <BQ/BQString.h>

BQ_DEFINE_STRING(kVXXMLRPCProtocol, "XML-RPC");
BQ_DEFINE_STRING(kVXSOAP1999Protocol, "SOAP-1999");
BQ_DEFINE_STRING(kVXSOAP2001Protocol, "SOAP-2001");

BQ_DEFINE_STRING(kVXMethodInvocationResult, "/Result");
BQ_DEFINE_STRING(kVXFaultString, "/FaultString");
BQ_DEFINE_STRING(kVXFaultCode, "/FaultCode");
BQ_DEFINE_STRING(kVXFaultExtra, "/FaultExtra");
BQ_DEFINE_STRING(kVXHTTPResponseMessage, "/kVXHTTPResponseMessage");

BQ_DEFINE_STRING(kVXNetworkStreamFaultString, "/BQStreamFault");
BQ_DEFINE_STRING(kVXStreamErrorMessage, "msg");
BQ_DEFINE_STRING(kVXStreamErrorDomain, "domain");
BQ_DEFINE_STRING(kVXStreamErrorError, "error");

BQ_DEFINE_STRING(kVXHTTPMessage, "/kVXHTTPMessage");
BQ_DEFINE_STRING(kVXPostingMethod, "/VXPostingMethod");
BQ_DEFINE_STRING(kVXHTTPVersion, "/VXHTTPVersion");
BQ_DEFINE_STRING(kVXHTTPFollowsRedirects, "/VXHTTPFollowsRedirects");
BQ_DEFINE_STRING(kVXHTTPProxy, "/VXHTTPProxy");
BQ_DEFINE_STRING(kVXHTTPExtraHeaders, "/VXHTTPExtraHeaders");
BQ_DEFINE_STRING(kVXHTTPCertificateAuthorityFile, "/VXHTTPCertificateAuthorityFile");
BQ_DEFINE_STRING(kVXHTTPReplySizeLimit, "/VXHTTPReplySizeLimit");
BQ_DEFINE_STRING(kVXHTTPConnectionLimit, "/VXHTTPConnectionLimit");
BQ_DEFINE_STRING(kVXMethodInvocationTimeoutValue, "kVXMethodInvocationTimeoutValue");

BQ_DEFINE_STRING(kVXAuthInfo, "/VXHTTPAuthInfo");
BQ_DEFINE_STRING(kVXAuthInfo_user, "username");
BQ_DEFINE_STRING(kVXAuthInfo_password, "password");
BQ_DEFINE_STRING(kVXAuthInfo_authScheme, "authScheme");
BQ_DEFINE_STRING(kVXAuthInfo_forProxy, "forProxy");

BQ_DEFINE_STRING(kVXDebugOutgoingHeaders, "/VXDebugOutHeaders");
BQ_DEFINE_STRING(kVXDebugOutgoingBody, "/VXDebugOutBody");
BQ_DEFINE_STRING(kVXDebugIncomingHeaders, "/VXDebugInHeaders");
BQ_DEFINE_STRING(kVXDebugIncomingBody, "/VXDebugInBody");

BQ_DEFINE_STRING(kVXSOAPMessageHeaders, "/VXHTTPMessageHeaders");
BQ_DEFINE_STRING(kVXSOAPMethodNamespaceURI, "/VXSOAPMethodNamespaceURI");
BQ_DEFINE_STRING(kVXSOAPBodyEncodingStyle, "/VXSOAPBodyEncodingStyle");
BQ_DEFINE_STRING(kVXSOAPStyleRPC, "rpc");
BQ_DEFINE_STRING(kVXSOAPStyleDoc, "doc");
BQ_DEFINE_STRING(kVXMethodInvocationResultParameterName, "/VXResultParamName");

BQ_DEFINE_STRING(kVXRecordParameterOrder, "/VXRecordParamOrder");
BQ_DEFINE_STRING(kVXRecordNamespaceURI, "/VXRecordNamespaceURI");
BQ_DEFINE_STRING(kVXRecordType, "/VXRecordType");

BQ_DEFINE_STRING(kVXRequestMethodName, "/VXMethodName");
BQ_DEFINE_STRING(kVXRequestParameters, "/VXMethodParameters");
BQ_DEFINE_STRING(kVXRequestParameterOrder, "/VXMethodParameterOrder");
BQ_DEFINE_STRING(kVXRequestTextEncoding, "/VXTextEncoding");
