#include <gtest/gtest.h>

#include <VX/VXConstants.h>

#include <string>

#include "soap/SOAPProtocolHandler.h"
#include "support/Values.h"

namespace {

using namespace support;

const std::string kOpening2001 = R"(<?xml version="1.0" encoding="UTF-8"?>
  <SOAP-ENV:Envelope
    xmlns:xsd="http://www.w3.org/2001/XMLSchema"
    xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
    xmlns:SOAP-ENC="http://schemas.xmlsoap.org/soap/encoding/"
    SOAP-ENV:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/"
    xmlns:SOAP-ENV="http://schemas.xmlsoap.org/soap/envelope/">
)";
const std::string kOpening1999 = R"(<?xml version="1.0" encoding="UTF-8"?>
  <SOAP-ENV:Envelope
    xmlns:xsd="http://www.w3.org/1999/XMLSchema"
    xmlns:xsi="http://www.w3.org/1999/XMLSchema-instance"
    SOAP-ENV:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/"
    xmlns:SOAP-ENV="http://schemas.xmlsoap.org/soap/envelope/"
    xmlns:SOAP-ENC="http://schemas.xmlsoap.org/soap/encoding/">
)";

std::string envelope(const std::string& lines, const std::string& opening = kOpening2001) {
  return withCRLF(opening + lines + "  </SOAP-ENV:Envelope>\n");
}

std::string body(const std::string& lines) {
  return "      <SOAP-ENV:Body>\n" + lines + "      </SOAP-ENV:Body>\n";
}

struct Property {
  const BQString* key;
  Value value;
};

std::string request(const BQString* protocol, std::initializer_list<Property> properties,
                    const Value& parameters, const Value& order) {
  vx::SOAPProtocolHandler handler(protocol);
  for (const Property& property : properties) handler.setProperty(property.key, property.value);
  return bytes(Value::adopt(handler.createRequest(BQSTR("add"), parameters, order, nullptr)));
}

TEST(SOAPRequestDocument, HasTheFormOfItsGenerationAndStyle) {
  const std::string parameters = R"(          <a xsi:type="xsd:int">1</a>
          <b xsi:type="xsd:double">2.5</b>
)";
  auto method = [&](const std::string& prefix, const std::string& uri) {
    std::string declaration = prefix.empty() ? " xmlns=\"" : " xmlns:m=\"";
    return body("        <" + prefix + "add" + declaration + uri + "\">\n" + parameters + "        </" +
                prefix + "add>\n");
  };
  const Value uri = string("urn:x"), rpc = Value::retain(kVXSOAPStyleRPC),
              doc = Value::retain(kVXSOAPStyleDoc);
  const BQString* const uriKey = kVXSOAPMethodNamespaceURI;
  const BQString* const style = kVXSOAPBodyEncodingStyle;
  const struct {
    const BQString* protocol;
    std::initializer_list<Property> properties;
    std::string document;
    const char* why;
  } rows[] = {
      {kVXSOAP2001Protocol, {{uriKey, uri}, {style, rpc}}, envelope(method("m:", "urn:x")), "rpc"},
      {kVXSOAP2001Protocol, {{uriKey, uri}}, envelope(method("", "urn:x")), "document by default"},
      {kVXSOAP2001Protocol, {{uriKey, uri}, {style, doc}}, envelope(method("", "urn:x")), "document"},
      {kVXSOAP2001Protocol,
       {{uriKey, uri}, {style, string("rpc")}},
       envelope(method("", "urn:x")),
       "a text like the constant is not the constant"},
      {kVXSOAP2001Protocol, {}, envelope(method("", "urn:vx:method")), "placeholder namespace"},
      {kVXSOAP1999Protocol, {{uriKey, uri}}, envelope(method("m:", "urn:x"), kOpening1999), "1999"},
      {kVXSOAP1999Protocol,
       {{style, doc}},
       envelope(method("m:", "urn:vx:method"), kOpening1999),
       "1999 has no document form"},
      {kVXXMLRPCProtocol, {}, "(null)", "another protocol"},
      {BQSTR("no protocol"), {}, "(null)", "no protocol"},
      {nullptr, {}, "(null)", "none at all"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(request(row.protocol, row.properties, dictionary({{"b", real(2.5)}, {"a", integer(1)}}),
                      array({string("a"), string("b")})),
              row.document)
        << row.why;
  }
}

TEST(SOAPRequestDocument, HasTheParametersOfItsOrder) {
  auto document = [](const std::string& lines) {
    return envelope(body("        <add xmlns=\"urn:vx:method\">\n" + lines + "        </add>\n"));
  };
  const std::string one = "          <a xsi:type=\"xsd:int\">1</a>\n",
                    nil = "          <missing xsi:type=\"nil\"/>\n";
  const Value parameters = dictionary({{"a", integer(1)}, {"b", string("not named")}});
  const std::pair<Value, std::string> rows[] = {
      {Value(), document("")},
      {array({}), document("")},
      {array({string("missing"), string("a"), string("a")}), document(nil + one + one)},
  };
  for (const auto& [order, expected] : rows) {
    EXPECT_EQ(request(kVXSOAP2001Protocol, {}, parameters, order), expected);
  }
  EXPECT_EQ(request(kVXSOAP2001Protocol, {}, Value(), array({string("missing")})), document(nil));
}

TEST(SOAPRequestDocument, HoldsTheHeaderAsItIs) {
  const std::string open = "      <SOAP-ENV:Header>\n", close = "      </SOAP-ENV:Header>\n";
  const struct {
    Value header;
    std::string lines;
  } rows[] = {
      {Value(), ""},
      {string("<t:a xmlns:t=\"u\">&%@</t:a>"), open + "        <t:a xmlns:t=\"u\">&%@</t:a>\n" + close},
      {array({string("<a/>"), integer(5), string("%@")}),
       open + "        <a/>\n        5\n        %@\n" + close},
      {array({}), open + close},
      {dictionary({}), "        <!-- kVXHTTPExtraHeaders requires a BQString or BQArray -->\n"},
      {integer(1), "        <!-- kVXHTTPExtraHeaders requires a BQString or BQArray -->\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(request(kVXSOAP2001Protocol, {{kVXSOAPMessageHeaders, row.header}}, Value(), Value()),
              envelope(row.lines + body("        <add xmlns=\"urn:vx:method\">\n        </add>\n")));
  }
}

TEST(SOAPReplyDocument, AnswersTheMethodOfTheRequest) {
  auto reply = [](const BQString* protocol, const Value& request, const Value& result) {
    return bytes(Value::adopt(vx::SOAPProtocolHandler(protocol).createReply(request, result)));
  };
  const Value plain = dictionary({{"/VXMethodName", string("add")}});
  const Value qualified =
      dictionary({{"/VXMethodName", string("add")}, {"/VXSOAPMethodNamespaceURI", string("urn:x")}});
  const std::string three = body(R"(        <m:addResponse xmlns:m="urn:x">
          <Result xsi:type="xsd:int">3</Result>
        </m:addResponse>
)");
  EXPECT_EQ(reply(kVXSOAP2001Protocol, qualified, integer(3)), envelope(three));
  EXPECT_EQ(reply(kVXSOAP1999Protocol, qualified, integer(3)), envelope(three, kOpening1999));
  EXPECT_EQ(reply(kVXSOAP2001Protocol, plain, Value()), envelope(body(R"(        <addResponse>
          <Result xsi:type="nil"/>
        </addResponse>
)")));
  EXPECT_EQ(reply(nullptr, qualified, integer(3)), "(null)");
  EXPECT_EQ(reply(kVXSOAP2001Protocol, Value(), integer(3)), "(null)") << "no method to answer";
}

TEST(SOAPReplyDocument, IsInTheEncodingOfTheRequest) {
  vx::SOAPProtocolHandler handler(kVXSOAP2001Protocol);
  Value latin1 =
      dictionary({{"/VXMethodName", string("m")}, {"/VXTextEncoding", integer(kBQStringEncodingISOLatin1)}});
  std::string document = bytes(Value::adopt(handler.createReply(latin1, string("\u00e9"))));
  EXPECT_NE(document.find("encoding=\"ISO-8859-1\""), std::string::npos);
  EXPECT_NE(document.find(">\xe9</Result>"), std::string::npos);
}

TEST(SOAPFaultDocument, HoldsTheFaultString) {
  auto fault = [](const BQString* protocol, const Value& request, const Value& dictionary) {
    return bytes(Value::adopt(vx::SOAPProtocolHandler(protocol).createFault(request, dictionary)));
  };
  auto lines = [](const std::string& text) {
    return body(R"(        <SOAP-ENV:Fault>
          <faultcode>SOAP-ENV:Client</faultcode>
          <faultstring>)" +
                text + R"(</faultstring>
        </SOAP-ENV:Fault>
)");
  };
  Value full = dictionary({{"/FaultCode", integer(42)}, {"/FaultString", string("a<b>&%@")}});
  EXPECT_EQ(fault(kVXSOAP2001Protocol, Value(), full), envelope(lines("a<b>&%@")));
  EXPECT_EQ(fault(kVXSOAP1999Protocol, dictionary({}), full), envelope(lines("a<b>&%@"), kOpening1999));
  EXPECT_EQ(fault(kVXSOAP2001Protocol, Value(), dictionary({})), envelope(lines("Unknown Fault")));
  EXPECT_EQ(fault(BQSTR("SOAP-2001x"), Value(), full), "(null)");
}

}  // namespace
