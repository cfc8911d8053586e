#include <gtest/gtest.h>

#include <VX/VXConstants.h>

#include "soap/Envelope.h"
#include "soap/SOAPProtocolHandler.h"
#include "support/Values.h"

namespace {

using namespace support;

/* The request dictionary; "-" for none, and the message where there is one. */
std::string readRequest(const std::string& document, const BQString* methodNamespace = nullptr) {
  vx::SOAPProtocolHandler handler(kVXSOAP2001Protocol);
  handler.setProperty(kVXSOAPMethodNamespaceURI, methodNamespace);
  const BQString* message = nullptr;
  testing::internal::CaptureStderr();
  Value request = Value::adopt(handler.parsePostData(blob(document), kBQStringEncodingUTF8, &message));
  testing::internal::GetCapturedStderr();
  Value owned = Value::adopt(message);
  return notation(request.get()) + (message != nullptr ? " " + text(message) : "");
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
  for (const auto& row : rows) EXPECT_EQ(readRequest(row.document), row.request) << row.document;
  EXPECT_EQ(readRequest(body("<m/>"), BQSTR("urn:set")), requestOf("urn:set", "", ""));
  EXPECT_NE(readRequest("<e:Envelope>").find(" (line "), std::string::npos) << "the parser's message";
}

BQTypeRef decline(VXMethodInvocationRef, const BQTree*, const BQTree*, void* calls) {
  ++*static_cast<int*>(calls);
  return nullptr;
}

TEST(SOAPRequest, OverrideThatDeclinesIsAskedOnceMoreAboutAParameter) {
  const struct {
    const char* content;
    int callsForReply, callsForBoth;
  } rows[] = {
      {"<m><v>5</v></m>", 1, 3},
      {"<m><w><v>5</v></w></m>", 2, 4},
      {"<m><a href='#1'/><b href='#1'/></m><r id='1'><v>5</v></r>", 2, 4},
  };
  for (const auto& row : rows) {
    vx::SOAPProtocolHandler handler(kVXSOAP2001Protocol);
    int calls = 0;
    VXClientContext context = {0, &calls, nullptr, nullptr, nullptr};
    handler.addDeserializationOverride(BQSTR("*"), BQSTR("v"), decline, &context);
    Value document = blob(body(row.content));
    Value reply = Value::adopt(handler.parseReplyData(BQSTR("m"), document, kBQStringEncodingUTF8, nullptr));
    EXPECT_EQ(calls, row.callsForReply) << row.content;
    Value::adopt(handler.parsePostData(document, kBQStringEncodingUTF8, nullptr));
    EXPECT_EQ(calls, row.callsForBoth) << row.content;
    EXPECT_NE(notation(reply.get()).find("v: '5'"), std::string::npos) << "the library reads it";
  }
}

/* The result dictionary of a reply to the method m. */
std::string readReply(const std::string& document, const BQString* resultName = nullptr) {
  vx::SOAPProtocolHandler handler(kVXSOAP2001Protocol);
  handler.setProperty(kVXMethodInvocationResultParameterName, resultName);
  testing::internal::CaptureStderr();
  Value result =
      Value::adopt(handler.parseReplyData(BQSTR("m"), blob(document), kBQStringEncodingUTF8, nullptr));
  testing::internal::GetCapturedStderr();
  return notation(result.get());
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

/* The result dictionary with these outputs. */
std::string outputs(const std::string& entries) {
  return "{/Result: {" + entries + "}, " + entries + "}";
}

TEST(SOAPReply, GivesItsOutputs) {
  const std::string types =
      " xmlns:xsd='http://www.w3.org/2001/XMLSchema' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'";
  const std::string typed = "<mResponse><r xsi:type='xsd:int'>1</r></mResponse>";
  const std::pair<std::string, std::string> rows[] = {
      {body("<mResponse><Result>3</Result></mResponse>"), outputs("Result: '3'")},
      {body("<x:mResponse xmlns:x='urn:other'><a>1</a></x:mResponse>"), outputs("a: '1'")},
      {body("<u:MRESPONSE><a>1</a></u:MRESPONSE>"), outputs("a: '1'")},
      {body("<m><p:a>1</p:a></m>"), outputs("p:a: '1'")},
      {body("<mResponse><a>1</a><b>2</b><a>3</a></mResponse>"), outputs("a: '3', b: '2'")},
      {body("<mResponse/>"), "{/Result: {}}"},
      {body("<m><a>1</a></m><mResponse><b>2</b></mResponse>"), "{/Result: {b: '2'}, a: '1', b: '2'}"},
      {body("<other/><mResponse><a href='#1'/></mResponse><r id='1'>x</r>"), outputs("a: 'x'")},
      {body("<mResponse>text</mResponse>"), outputs("text: null")},
      {body("<!-- c --><mResponse><!-- c --><a>x<!-- c -->y</a></mResponse>"), outputs("a: 'xy'")},
      {body("text"), "{}"},
      {body("<other/>"), "{}"},
      {body(""), "{}"},
      {envelope(""), "{}"},
      {envelope("<e:BODY><mResponse/></e:BODY><Body><mResponse><a/></mResponse></Body>"), "{/Result: {}}"},
      {"<Envelope><Body><mResponse/></Body></Envelope>", "{}"},
      {"<e:Envelope xmlns:e='http://www.w3.org/2003/05/soap-envelope'><e:Body><m/></e:Body></e:Envelope>",
       "{}"},
      {envelope("<e:Header><m><a/></m>text<b/></e:Header><e:Body/>"),
       "{/VXHTTPMessageHeaders: [BQTree, BQTree, BQTree]}"},
      {envelope("<e:Header/><e:Body><m/></e:Body>"), "{/Result: {}}"},
      {envelope("<e:Body xmlns:e='urn:x'><m><a/></m></e:Body><e:Body><m/></e:Body>"), "{/Result: {}}"},
      /* A default namespace in each place where toolkits declare it. */
      {body(typed, types + " xmlns='urn:d'"), outputs("r: 1")},
      {envelope("<e:Body xmlns='urn:d'><m><r type='xsd:int'>1</r></m></e:Body>", types), outputs("r: 1")},
      {body("<mResponse xmlns='urn:d'><r xsi:type='xsd:int'>1</r></mResponse>", types), outputs("r: 1")},
      {body("<m><r xsi:type='int'>1</r></m>", types + " xmlns='http://www.w3.org/2001/XMLSchema'"),
       outputs("r: 1")},
      {body("<mResponse xmlns=''><r>1</r></mResponse>", types), outputs("r: '1'")},
      {body("<u:mResponse><v:r w:type='x:int'>1</v:r></u:mResponse>"), outputs("v:r: '1'")},
  };
  for (const auto& [document, result] : rows) EXPECT_EQ(readReply(document), result) << document;
}

TEST(SOAPReply, GivesTheNamedOutputAsItsResult) {
  const std::string document = body("<mResponse><a>1</a><b>2</b></mResponse>");
  EXPECT_EQ(readReply(document, BQSTR("b")), "{/Result: '2', a: '1', b: '2'}");
  EXPECT_EQ(unquoted(readReply(document, BQSTR("c"))),
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
    EXPECT_EQ(readReply(body("<e:Fault>" + row.content + "</e:Fault>")), row.result) << row.content;
  }
  EXPECT_EQ(readReply(body("<Fault>" + code + "</Fault>")), "{}") << "no fault outside of the namespace";
}

TEST(SOAPReply, ThatCannotBeReadIsAFaultWithAMessage) {
  EXPECT_EQ(unquoted(readReply(body("<mResponse><a>1</a><b href='#x'/></mResponse>"))),
            unquoted("{" + unusable("Can't locate anchor element in reply") + "}"))
      << "and no output is given";
  for (const char* document : {"", "text", "<e:Envelope>", "<a>\xff</a>"}) {
    std::string result = readReply(document);
    EXPECT_NE(result.find("/FaultCode: -65794"), std::string::npos) << result;
    EXPECT_NE(result.find(" (line "), std::string::npos) << result;
  }
}

/* As toolkits write it that put every value behind a reference. */
TEST(SOAPReply, WithEveryValueByReferenceIsRead) {
  EXPECT_EQ(readReply(withCRLF(R"(<?xml version="1.0"?>
<soapenv:Envelope xmlns:soapenv="http://schemas.xmlsoap.org/soap/envelope/"
    xmlns:xsd="http://www.w3.org/2001/XMLSchema" xmlns:soapenc="http://schemas.xmlsoap.org/soap/encoding/"
    xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance">
<soapenv:Body>
  <ns1:mResponse xmlns:ns1="urn:interop" soapenv:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">
    <Return href="#id0"/>
  </ns1:mResponse>
  <multiRef id="id0" soapenc:root="0" xmlns:ns2="urn:types" xsi:type="ns2:Order">
    <number href="#id1"/>
    <lines soapenc:arrayType="ns2:Line[2]" xsi:type="soapenc:Array"><item href="#id2"/><item href="#id2"/></lines>
    <note xsi:type="xsd:string" xsi:nil="true"/>
  </multiRef>
  <multiRef id="id2" soapenc:root="0" xmlns:ns3="urn:types" xsi:type="ns3:Line">
    <price href="#id3"/>
  </multiRef>
  <multiRef id="id1" soapenc:root="0" xsi:type="xsd:int">17</multiRef>
  <multiRef id="id3" soapenc:root="0" xsi:type="xsd:double">2.5</multiRef>
</soapenv:Body>
</soapenv:Envelope>
)")),
            outputs("Return: {number: 17, lines: [{price: 2.5d}, {price: 2.5d}], note: null}"));
}

}  // namespace
