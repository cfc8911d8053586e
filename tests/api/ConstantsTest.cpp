#include <VX/VX.h>
#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"

namespace {

using support::text;

/* Set before this program's main, when the library's own initialisers may not have run. */
const bool kSetBeforeMain = text(kVXXMLRPCProtocol) == "XML-RPC" && text(kVXRecordType) == "/VXRecordType";

TEST(Constants, AreSetBeforeAnyInitialiserRuns) {
  EXPECT_TRUE(kSetBeforeMain);
}

TEST(Constants, HaveTheirDocumentedTexts) {
  const std::pair<const BQString*, const char*> rows[] = {
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
      {kVXHTTPMessage, "/kVXHTTPMessage"},
      {kVXHTTPResponseMessage, "/kVXHTTPResponseMessage"},
      {kVXPostingMethod, "/VXPostingMethod"},
      {kVXHTTPVersion, "/VXHTTPVersion"},
      {kVXHTTPFollowsRedirects, "/VXHTTPFollowsRedirects"},
      {kVXHTTPProxy, "/VXHTTPProxy"},
      {kVXHTTPExtraHeaders, "/VXHTTPExtraHeaders"},
      {kVXHTTPCertificateAuthorityFile, "/VXHTTPCertificateAuthorityFile"},
      {kVXHTTPReplySizeLimit, "/VXHTTPReplySizeLimit"},
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
  for (auto [constant, value] : rows) EXPECT_EQ(text(constant), value);
}

}  // namespace
