/* The public constants that are strings, which go into saved calls and printed results, with their texts. */
#ifndef SUPPORT_CONSTANTS_H
#define SUPPORT_CONSTANTS_H

#include <utility>

#include <VX/VXConstants.h>

namespace support {

inline const BQString* const kProtocols[] = {kVXXMLRPCProtocol, kVXSOAP1999Protocol, kVXSOAP2001Protocol};

inline const std::pair<const BQString*, const char*> kConstants[] = {
    {kVXXMLRPCProtocol, "XML-RPC"},
    {kVXSOAP1999Protocol, "SOAP-1999"},
    {kVXSOAP2001Protocol, "SOAP-2001"},
    {kVXMethodInvocationResult, "/Result"},
    {kVXFaultString, "/FaultString"},
    {kVXFaultCode, "/FaultCode"},
    {kVXFaultExtra, "/FaultExtra"},
    {kVXNetworkStreamFaultString, "/BQStreamFault"},
    {kVXStreamErrorMessage, "msg"},
    {kVXStreamErrorDomain, "domain"},
    {kVXStreamErrorError, "error"},
    {kVXRequestMethodName, "/VXMethodName"},
    {kVXRequestParameters, "/VXMethodParameters"},
    {kVXRequestParameterOrder, "/VXMethodParameterOrder"},
    {kVXRequestTextEncoding, "/VXTextEncoding"},
    {kVXHTTPMessage, "/kVXHTTPMessage"},
    {kVXHTTPResponseMessage, "/kVXHTTPResponseMessage"},
    {kVXPostingMethod, "/VXPostingMethod"},
    {kVXHTTPVersion, "/VXHTTPVersion"},
    {kVXHTTPFollowsRedirects, "/VXHTTPFollowsRedirects"},
    {kVXHTTPProxy, "/VXHTTPProxy"},
    {kVXHTTPExtraHeaders, "/VXHTTPExtraHeaders"},
    {kVXHTTPCertificateAuthorityFile, "/VXHTTPCertificateAuthorityFile"},
    {kVXHTTPReplySizeLimit, "/VXHTTPReplySizeLimit"},
    {kVXHTTPConnectionLimit, "/VXHTTPConnectionLimit"},
    {kVXAuthInfo, "/VXHTTPAuthInfo"},
    {kVXAuthInfo_user, "username"},
    {kVXAuthInfo_password, "password"},
    {kVXAuthInfo_authScheme, "authScheme"},
    {kVXAuthInfo_forProxy, "forProxy"},
    {kVXDebugOutgoingHeaders, "/VXDebugOutHeaders"},
    {kVXDebugOutgoingBody, "/VXDebugOutBody"},
    {kVXDebugIncomingHeaders, "/VXDebugInHeaders"},
    {kVXDebugIncomingBody, "/VXDebugInBody"},
    {kVXSOAPMessageHeaders, "/VXHTTPMessageHeaders"},
    {kVXSOAPMethodNamespaceURI, "/VXSOAPMethodNamespaceURI"},
    {kVXSOAPBodyEncodingStyle, "/VXSOAPBodyEncodingStyle"},
    {kVXSOAPStyleRPC, "rpc"},
    {kVXSOAPStyleDoc, "doc"},
    {kVXRecordParameterOrder, "/VXRecordParamOrder"},
    {kVXRecordNamespaceURI, "/VXRecordNamespaceURI"},
    {kVXRecordType, "/VXRecordType"},
    {kVXMethodInvocationResultParameterName, "/VXResultParamName"},
    {kVXMethodInvocationTimeoutValue, "kVXMethodInvocationTimeoutValue"},
};

}  // namespace support

#endif
