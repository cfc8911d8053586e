#include <gtest/gtest.h>

#include <VX/VXConstants.h>

#include <string>

#include "soap/SOAPProtocolHandler.h"
#include "support/Values.h"

namespace {

using namespace support;

/* The method result of a reply to echo in urn:interop whose Envelope has these attributes. */
std::string result(const std::string& content, const std::string& attributes = "") {
  vx::SOAPProtocolHandler handler(kVXSOAP2001Protocol);
  handler.setProperty(kVXSOAPMethodNamespaceURI, BQSTR("urn:interop"));
  std::string document = R"(<?xml version="1.0"?>
<soapenv:Envelope xmlns:soapenv="http://schemas.xmlsoap.org/soap/envelope/"
    xmlns:xsd="http://www.w3.org/2001/XMLSchema" xmlns:soapenc="http://schemas.xmlsoap.org/soap/encoding/"
    xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" )" +
                         attributes + ">\n" + content + "\n</soapenv:Envelope>\n";
  Value reply = Value::adopt(
      handler.parseReplyData(BQSTR("echo"), blob(withCRLF(document)), kBQStringEncodingUTF8, nullptr));
  return notation(BQDictionaryGetValue(reply, kVXMethodInvocationResult));
}

std::string body(const std::string& content) {
  return "<soapenv:Body>\n" + content + "\n</soapenv:Body>";
}

TEST(ToolkitDocument, WithEveryValueByReferenceIsRead) {
  EXPECT_EQ(result(body(R"(
  <ns1:echoResponse xmlns:ns1="urn:interop" soapenv:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">
    <echoReturn href="#id0"/>
  </ns1:echoResponse>
  <multiRef id="id0" soapenc:root="0" xmlns:ns2="urn:types" xsi:type="ns2:Order">
    <number href="#id1"/>
    <lines soapenc:arrayType="ns2:Line[2]" xsi:type="soapenc:Array"><item href="#id2"/><item href="#id2"/></lines>
    <note xsi:type="xsd:string" xsi:nil="true"/>
  </multiRef>
  <multiRef id="id2" soapenc:root="0" xmlns:ns3="urn:types" xsi:type="ns3:Line">
    <price href="#id3"/>
  </multiRef>
  <multiRef id="id1" soapenc:root="0" xsi:type="xsd:int">17</multiRef>
  <multiRef id="id3" soapenc:root="0" xsi:type="xsd:double">2.5</multiRef>)")),
            "{echoReturn: {number: 17, lines: [{price: 2.5d}, {price: 2.5d}], note: null}}");
}

TEST(ToolkitDocument, OfAnyShapeIsRead) {
  const struct {
    const char* why;
    std::string content;
    std::string attributes;
    const char* value;
  } rows[] = {
      {"nil in both generations",
       body("<echoResponse><a xsi:nil='true'/><b xsi:null='1'/><c xsi:type='xsd:null'/></echoResponse>"), "",
       "{a: null, b: null, c: null}"},
      {"only an arrayType, items of any name",
       body("<echoResponse><r xmlns:q='http://schemas.xmlsoap.org/soap/encoding/' q:arrayType='xsd:int[2]'>"
            "<xsd:int xsi:type='xsd:int'>1</xsd:int><Item xsi:type='xsd:int'>2</Item></r></echoResponse>"),
       "", "{r: [1, 2]}"},
      {"only the type of arrays, under any prefix",
       body("<echoResponse><r xmlns:q='http://schemas.xmlsoap.org/soap/encoding/' xsi:type='q:Array'><i>1</i>"
            "</r></echoResponse>"),
       "", "{r: ['1']}"},
      {"a struct of the service's own type",
       body("<t:echoResponse xmlns:t='urn:interop'><r xsi:type='t:S'><a xsi:type='xsd:float'>1.5</a>"
            "</r></t:echoResponse>"),
       "", "{r: {a: 1.5d}}"},
      {"a default namespace at the envelope",
       body("<echoResponse><r xsi:type='xsd:int'>1</r></echoResponse>"), "xmlns='urn:interop'", "{r: 1}"},
      {"a default namespace at the body",
       "<soapenv:Body xmlns='urn:interop'><echoResponse><r "
       "type='xsd:int'>1</r></echoResponse></soapenv:Body>",
       "", "{r: 1}"},
      {"a default namespace at the method",
       body("<echoResponse xmlns='urn:interop'><r xsi:type='xsd:int'>1</r></echoResponse>"), "", "{r: 1}"},
      {"the schema as the default namespace", body("<echoResponse><r xsi:type='int'>1</r></echoResponse>"),
       "xmlns='http://www.w3.org/2001/XMLSchema'", "{r: 1}"},
      {"undeclared prefixes", body("<u:echoResponse><v:r w:type='x:int'>1</v:r></u:echoResponse>"), "",
       "{v:r: '1'}"},
      {"no namespace", body("<echoResponse xmlns=''><r>1</r></echoResponse>"), "", "{r: '1'}"},
      {"another case", body("<ECHORESPONSE><r>1</r></ECHORESPONSE>"), "", "{r: '1'}"},
      {"white space around numbers",
       body("<echoResponse>\n<a xsi:type='xsd:int'>\n 5\n</a>\n<b xsi:type='xsd:double'> 2.5\n</b>"
            "</echoResponse>"),
       "", "{a: 5, b: 2.5d}"},
      {"line ends in a text", body("<echoResponse><a>x\ny</a></echoResponse>"), "", "{a: 'x\ny'}"},
      {"CDATA",
       body("<echoResponse><a xsi:type='xsd:string'><![CDATA[<b>&]]></a><b xsi:type='xsd:int'>"
            "<![CDATA[5]]></b></echoResponse>"),
       "", "{a: '<b>&', b: 5}"},
      {"a header before the body",
       "<soapenv:Header><echoResponse><a>no</a></echoResponse></soapenv:Header>" +
           body("<echoResponse><a>yes</a></echoResponse>"),
       "", "{a: 'yes'}"},
      {"comments", body("<!-- c --><echoResponse><!-- c --><a>x<!-- c -->y</a></echoResponse>"), "",
       "{a: 'xy'}"},
  };
  for (const auto& row : rows) EXPECT_EQ(result(row.content, row.attributes), row.value) << row.why;
}

}  // namespace
