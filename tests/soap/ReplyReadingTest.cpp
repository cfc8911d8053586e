#include <gtest/gtest.h>

#include <VX/VXConstants.h>

#include <string>

#include "soap/SOAPProtocolHandler.h"
#include "support/Values.h"

namespace {

using namespace support;

/* The result dictionary of a reply to the method m. */
std::string read(const std::string& document, const BQString* resultName = nullptr) {
  vx::SOAPProtocolHandler handler(kVXSOAP2001Protocol);
  handler.setProperty(kVXMethodInvocationResultParameterName, resultName);
  testing::internal::CaptureStderr();
  Value result =
      Value::adopt(handler.parseReplyData(BQSTR("m"), blob(document), kBQStringEncodingUTF8, nullptr));
  testing::internal::GetCapturedStderr();
  return notation(result.get());
}

std::string envelope(const std::string& content) {
  return "<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'>" + content + "</e:Envelope>";
}

std::string body(const std::string& content) {
  return envelope("<e:Body>" + content + "</e:Body>");
}

std::string fault(const std::string& code, const std::string& text) {
  return "{/kVXResultIsFault: true, /FaultString: '" + text + "', /FaultCode: " + code + "}";
}

std::string unusable(const std::string& message) {
  return "/kVXResultIsFault: true, /FaultString: '/BQStreamFault', /FaultCode: -65794, /FaultExtra: {msg: "
         "\"" +
         message + "\", domain: -1, error: -65795}";
}

/* Messages with apostrophes in them are told apart by these. */
std::string unquoted(std::string text) {
  std::erase_if(text, [](char c) { return c == '\'' || c == '"'; });
  return text;
}

TEST(SOAPReply, GivesItsOutputs) {
  const std::pair<std::string, const char*> rows[] = {
      {body("<mResponse><Result>3</Result></mResponse>"), "{/Result: {Result: '3'}, Result: '3'}"},
      {body("<x:mResponse xmlns:x='urn:other'><a>1</a></x:mResponse>"), "{/Result: {a: '1'}, a: '1'}"},
      {body("<u:MRESPONSE><a>1</a></u:MRESPONSE>"), "{/Result: {a: '1'}, a: '1'}"},
      {body("<m><p:a>1</p:a></m>"), "{/Result: {p:a: '1'}, p:a: '1'}"},
      {body("<mResponse><a>1</a><b>2</b><a>3</a></mResponse>"),
       "{/Result: {a: '3', b: '2'}, a: '3', b: '2'}"},
      {body("<mResponse/>"), "{/Result: {}}"},
      {body("<m><a>1</a></m><mResponse><b>2</b></mResponse>"), "{/Result: {b: '2'}, a: '1', b: '2'}"},
      {body("<other/><mResponse><a href='#1'/></mResponse><r id='1'>x</r>"), "{/Result: {a: 'x'}, a: 'x'}"},
      {body("<mResponse>text</mResponse>"), "{/Result: {text: null}, text: null}"},
      {body("text"), "{}"},
      {body("<other/>"), "{}"},
      {body(""), "{}"},
      {envelope(""), "{}"},
      {envelope("<e:BODY><mResponse/></e:BODY><Body><mResponse><a/></mResponse></Body>"), "{/Result: {}}"},
      {"<Envelope><Body><mResponse/></Body></Envelope>", "{}"},
      {"<e:Envelope xmlns:e='http://www.w3.org/2003/05/soap-envelope'><e:Body><m/></e:Body></e:Envelope>",
       "{}"},
      {envelope("<e:Header><a/>text<b/></e:Header><e:Body/>"),
       "{/VXHTTPMessageHeaders: [BQTree, BQTree, BQTree]}"},
      {envelope("<e:Header/><e:Body><m/></e:Body>"), "{/Result: {}}"},
  };
  for (const auto& [document, result] : rows) EXPECT_EQ(read(document), result) << document;
}

TEST(SOAPReply, GivesTheNamedOutputAsItsResult) {
  const std::string document = body("<mResponse><a>1</a><b>2</b></mResponse>");
  EXPECT_EQ(read(document, BQSTR("b")), "{/Result: '2', a: '1', b: '2'}");
  EXPECT_EQ(unquoted(read(document, BQSTR("c"))),
            unquoted("{" + unusable("Can't find method result parameter 'c' in reply") + ", a: 1, b: 2}"));
}

TEST(SOAPReply, GivesItsFault) {
  const std::string code = "<faultcode>42</faultcode>", text = "<faultstring>no &amp; never</faultstring>";
  const struct {
    std::string content;
    std::string result;
  } rows[] = {
      {code + text, fault("42", "no & never")},
      {text + code + "<faultactor>x</faultactor><detail><a/></detail>", fault("42", "no & never")},
      {"<e:faultcode>-7x</e:faultcode><e:FaultString>s</e:FaultString>", fault("-7", "s")},
      {"<u:faultcode>7</u:faultcode><faultstring>a<![CDATA[<b>]]></faultstring>", fault("7", "a<b>")},
      {"<faultcode>e:Server</faultcode>" + text, fault("-1", "no & never")},
      {"<faultcode>0</faultcode>" + text, fault("-1", "no & never")},
      {"<faultcode> +5 </faultcode>" + text, fault("5", "no & never")},
      {"<faultcode>+-5</faultcode>" + text, fault("-1", "no & never")},
      {"<faultcode>99999999999</faultcode>" + text, fault("2147483647", "no & never")},
      {text, fault("0", "no & never")},
      {code, fault("42", "Server Fault")},
      {"", fault("0", "Server Fault")},
      {code + "<faultstring><b/></faultstring>", fault("42", "Server Fault")},
      {"<faultcode/>" + text, fault("-65795", "Can't parse <faultcode>")},
      {code + "<faultstring/>", fault("-65795", "Can't parse <faultstring>")},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(read(body("<e:Fault>" + row.content + "</e:Fault>")), row.result) << row.content;
  }
  EXPECT_EQ(read(body("<Fault>" + code + "</Fault>")), "{}") << "no fault outside of the namespace";
}

TEST(SOAPReply, ThatCannotBeReadIsAFaultWithAMessage) {
  EXPECT_EQ(unquoted(read(body("<mResponse><a>1</a><b href='#x'/></mResponse>"))),
            unquoted("{" + unusable("Can't locate anchor element in reply") + "}"))
      << "and no output is given";
  for (const char* document : {"", "text", "<e:Envelope>", "<a>\xff</a>"}) {
    std::string result = read(document);
    EXPECT_NE(result.find("/FaultCode: -65794"), std::string::npos) << result;
    EXPECT_NE(result.find(" (line "), std::string::npos) << result;
  }
}

}  // namespace
