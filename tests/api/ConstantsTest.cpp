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
  std::string texts;
  for (const BQString* constant : {kVXXMLRPCProtocol,
                                   kVXSOAP1999Protocol,
                                   kVXSOAP2001Protocol,
                                   kVXMethodInvocationResult,
                                   kVXFaultString,
                                   kVXFaultCode,
                                   kVXFaultExtra,
                                   kVXNetworkStreamFaultString,
                                   kVXStreamErrorMessage,
                                   kVXStreamErrorDomain,
                                   kVXStreamErrorError,
                                   kVXHTTPMessage,
                                   kVXHTTPResponseMessage,
                                   kVXPostingMethod,
                                   kVXHTTPVersion,
                                   kVXHTTPFollowsRedirects,
                                   kVXHTTPProxy,
                                   kVXHTTPExtraHeaders,
                                   kVXAuthInfo,
                                   kVXAuthInfo_user,
                                   kVXAuthInfo_password,
                                   kVXAuthInfo_authScheme,
                                   kVXAuthInfo_forProxy,
                                   kVXDebugOutgoingHeaders,
                                   kVXDebugOutgoingBody,
                                   kVXDebugIncomingHeaders,
                                   kVXDebugIncomingBody,
                                   kVXSOAPMessageHeaders,
                                   kVXSOAPMethodNamespaceURI,
                                   kVXSOAPBodyEncodingStyle,
                                   kVXSOAPStyleRPC,
                                   kVXSOAPStyleDoc,
                                   kVXRecordParameterOrder,
                                   kVXRecordNamespaceURI,
                                   kVXRecordType,
                                   kVXMethodInvocationResultParameterName,
                                   kVXMethodInvocationTimeoutValue}) {
    texts += text(constant) + " ";
  }
  EXPECT_EQ(texts,
            "XML-RPC SOAP-1999 SOAP-2001 /Result /FaultString /FaultCode /FaultExtra /BQStreamFault msg "
            "domain error /kVXHTTPMessage /kVXHTTPResponseMessage /VXPostingMethod /VXHTTPVersion "
            "/VXHTTPFollowsRedirects /VXHTTPProxy /VXHTTPExtraHeaders /VXHTTPAuthInfo username password "
            "authScheme forProxy /VXDebugOutHeaders /VXDebugOutBody /VXDebugInHeaders /VXDebugInBody "
            "/VXHTTPMessageHeaders /VXSOAPMethodNamespaceURI /VXSOAPBodyEncodingStyle rpc doc "
            "/VXRecordParamOrder /VXRecordNamespaceURI /VXRecordType /VXResultParamName "
            "kVXMethodInvocationTimeoutValue ");
}

}  // namespace
