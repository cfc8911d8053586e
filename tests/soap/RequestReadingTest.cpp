#include <gtest/gtest.h>

#include <VX/VXConstants.h>

#include <string>

#include "soap/SOAPProtocolHandler.h"
#include "support/Values.h"

namespace {

using namespace support;

/* The request dictionary; "-" for none, and the message where there is one. */
std::string read(const std::string& document, const BQString* methodNamespace = nullptr) {
  vx::SOAPProtocolHandler handler(kVXSOAP2001Protocol);
  handler.setProperty(kVXSOAPMethodNamespaceURI, methodNamespace);
  const BQString* message = nullptr;
  testing::internal::CaptureStderr();
  Value request = Value::adopt(handler.parsePostData(blob(document), kBQStringEncodingUTF8, &message));
  testing::internal::GetCapturedStderr();
  Value owned = Value::adopt(message);
  return notation(request.get()) + (message != nullptr ? " " + text(message) : "");
}

std::string envelope(const std::string& content) {
  return "<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'>" + content + "</e:Envelope>";
}

std::string body(const std::string& content) {
  return envelope("<e:Body>" + content + "</e:Body>");
}

std::string requestOf(const std::string& uri, const std::string& parameters, const std::string& order) {
  return "{/VXMethodName: 'm', " + (uri.empty() ? "" : "/VXSOAPMethodNamespaceURI: '" + uri + "', ") +
         "/VXMethodParameters: {" + parameters + "}, /VXMethodParameterOrder: [" + order + "]}";
}

TEST(SOAPRequest, GivesItsMethodAndParameters) {
  const struct {
    std::string document;
    std::string request;
  } rows[] = {
      {body("<c:m xmlns:c='urn:calc'><a>1</a></c:m>"), requestOf("urn:calc", "a: '1'", "'a'")},
      {body("<m xmlns='urn:calc'><a type='x:int'>1</a></m>"), requestOf("urn:calc", "a: 1", "'a'")},
      {body("<m/>"), requestOf("urn:vx:method", "", "")},
      {body("<u:m/>"), requestOf("", "", "")},
      {body("<m><a>1</a><p:b/><a>2</a></m>"),
       requestOf("urn:vx:method", "a: '2', p:b: null", "'a', 'p:b', 'a'")},
      {body("<m><a href='#1'/></m><other id='1'>x</other>"), requestOf("urn:vx:method", "a: 'x'", "'a'")},
      {body("<m>text</m>"), requestOf("urn:vx:method", "text: null", "'text'")},
      {body("m"), requestOf("urn:vx:method", "", "")},
      {envelope("<e:BODY><m/></e:BODY>"), requestOf("urn:vx:method", "", "")},
      {envelope("<e:Header><a/></e:Header>"), "{/VXHTTPMessageHeaders: BQTree}"},
      {envelope(""), "{}"},
      {"<Envelope><Body><m/></Body></Envelope>", "{}"},
      {"<other/>", "{}"},
      {body(""), "-"},
      {body("<m><a href='#none'/></m>"), "-"},
  };
  for (const auto& row : rows) EXPECT_EQ(read(row.document), row.request) << row.document;
  EXPECT_EQ(read(body("<m/>"), BQSTR("urn:set")), requestOf("urn:set", "", ""));
  EXPECT_NE(read("<e:Envelope>").find(" (line "), std::string::npos) << "the parser's message";
}

TEST(SOAPRequest, IsAnsweredInItsNamespace) {
  vx::SOAPProtocolHandler handler(kVXSOAP2001Protocol);
  Value request = Value::adopt(
      handler.parsePostData(blob(body("<c:m xmlns:c='urn:calc'/>")), kBQStringEncodingUTF8, nullptr));
  std::string reply = bytes(Value::adopt(handler.createReply(request, string("x"))));
  EXPECT_NE(reply.find("<m:mResponse xmlns:m=\"urn:calc\">"), std::string::npos) << reply;
}

}  // namespace
