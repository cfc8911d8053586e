#include <VX/VXConstants.h>
#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"
#include "xmlrpc/XMLRPCWebServiceMethodInvocation.h"

namespace {

using namespace support;

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

std::string request(const Value& name, const Value& parameters, const Value& order) {
  vx::XMLRPCProtocolHandler handler;
  return bytes(Value::adopt(handler.createRequest(name, parameters, order, nullptr)));
}

std::string reply(const Value& requestDictionary, const Value& result) {
  return bytes(Value::adopt(vx::XMLRPCProtocolHandler().createReply(requestDictionary, result)));
}

std::string fault(const Value& requestDictionary, const Value& faultDictionary) {
  return bytes(Value::adopt(vx::XMLRPCProtocolHandler().createFault(requestDictionary, faultDictionary)));
}

/* A request with these lines as its parameters. */
std::string requestWith(const std::string& lines) {
  return withCRLF(kDeclaration + "  <methodCall>\n    <methodName>m</methodName>\n" + lines +
                  "  </methodCall>\n");
}

std::string parameter(const std::string& line) {
  return "      <param>\n          <value>\n" + line + "\n          </value>\n      </param>\n";
}

std::string parameters(const std::string& content) {
  return "    <params>\n" + content + "    </params>\n";
}

TEST(RequestDocument, HasItsParametersInOrder) {
  EXPECT_EQ(request(string("examples.add"), dictionary({{"b", real(2.5)}, {"a", integer(1)}}),
                    array({string("a"), string("b")})),
            withCRLF(kDeclaration + R"(  <methodCall>
    <methodName>examples.add</methodName>
    <params>
      <param>
          <value>
            <i4>1</i4>
          </value>
      </param>
      <param>
          <value>
            <double>2.5</double>
          </value>
      </param>
    </params>
  </methodCall>
)"));
}

TEST(RequestDocument, TakesTheNamesFromTheFirstListThereIs) {
  const std::string one = parameter("            <i4>1</i4>"), two = parameter("            <i4>2</i4>"),
                    nil = parameter("      <i4>0</i4> <!-- parameter has no (nil) value -->");
  Value plain = dictionary({{"b", integer(2)}, {"/a", integer(1)}});
  Value recorded =
      dictionary({{"b", integer(2)}, {"a", integer(1)}, {"/VXRecordParamOrder", array({string("a")})}});
  const struct {
    Value parameters;
    Value order;
    std::string lines;
  } rows[] = {
      {Value(), Value(), ""},
      {dictionary({}), Value(), ""},
      {plain, array({}), ""},
      {plain, Value(), parameters(two + one)},
      {plain, array({string("/a")}), parameters(one)},
      {plain, array({string("missing"), Value(), string("b")}), parameters(nil + nil + two)},
      {Value(), array({string("a")}), parameters(nil)},
      {recorded, Value(), parameters(one)},
      {recorded, array({string("b")}), parameters(two)},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(request(string("m"), row.parameters, row.order), requestWith(row.lines))
        << notation(row.parameters.get()) << " " << notation(row.order.get());
  }
}

TEST(RequestDocument, HasItsMethodNameUnescaped) {
  std::string document = request(string("a<b&c\u00e9"), Value(), Value());
  EXPECT_NE(document.find("<methodName>a<b&c\u00e9</methodName>"), std::string::npos) << document;
  EXPECT_EQ(request(Value(), dictionary({}), Value()), "(null)") << "none without a name";
}

TEST(ReplyDocument, HoldsOneValueOrNone) {
  EXPECT_EQ(reply(Value(), Value()), withCRLF(kDeclaration + "<methodResponse>\n</methodResponse>\n"));
  EXPECT_EQ(reply(Value(), blob(std::string(57, 'M'))), withCRLF(kDeclaration + R"(<methodResponse>
  <params>
    <param>
      <value>
        <base64>
)") + "\t\t\tTU1NTU1NTU1NTU1NTU1NTU1NTU1NTU1NTU1NTU1NTU1NTU1NTU1N\n\t\t\tTU1NTU1NTU1NTU1NTU1NTU1N\r\n" +
                                                            withCRLF(R"(        </base64>
      </value>
    </param>
  </params>
</methodResponse>
)"));
}

TEST(ReplyDocument, IsInTheEncodingOfTheRequest) {
  auto inEncoding = [](Value encoding) {
    return reply(dictionary({{"/VXTextEncoding", encoding}}), string("\u00e9"));
  };
  auto declared = [](const std::string& document) { return document.substr(29, document.find("?>") - 29); };
  std::string latin1 = inEncoding(integer(kBQStringEncodingISOLatin1));
  EXPECT_EQ(declared(latin1), "\"ISO-8859-1\"");
  EXPECT_NE(latin1.find("<string>\xe9</string>"), std::string::npos);
  EXPECT_EQ(inEncoding(integer(kBQStringEncodingASCII)), "(null)") << "no such character";
  for (const Value& other : {integer(0x7777), string("513"), Value(), real(2.5)}) {
    EXPECT_EQ(declared(inEncoding(other)), "\"UTF-8\"") << notation(other.get());
  }
  EXPECT_EQ(declared(fault(dictionary({{"/VXTextEncoding", integer(kBQStringEncodingISOLatin1)}}), Value())),
            "\"ISO-8859-1\"");
}

std::string member(const std::string& name, const std::string& line) {
  return "        <member>\n          <name>" + name + "</name>\n            <value>\n              " + line +
         "\n            </value>\n        </member>\n";
}

TEST(FaultDocument, HoldsTheFaultAsAStruct) {
  auto document = [](const std::string& value) {
    return withCRLF(kDeclaration + "<methodResponse>\n  <fault>\n" + value +
                    "  </fault>\n</methodResponse>\n");
  };
  auto structure = [](const std::string& members) {
    return "    <value>\n      <struct>\n" + members + "      </struct>\n    </value>\n";
  };
  const std::string unknownCode = member("faultCode", "<i4>-1</i4>"),
                    unknownString = member("faultString", "<string>Unknown Fault</string>");
  EXPECT_EQ(fault(Value(), Value()), document(""));
  const struct {
    Value fault;
    std::string members;
  } rows[] = {
      {dictionary({}), unknownCode + unknownString},
      {dictionary({{"/FaultString", string("<no>")}}),
       unknownCode + member("faultString", "<string>&lt;no&gt;</string>")},
      {dictionary({{"/FaultCode", integer(4)},
                   {"faultCode", integer(5)},
                   {"/FaultString", string("a")},
                   {"faultString", string("b")},
                   {"ignored", string("c")}}),
       member("faultCode", "<i4>5</i4>") + member("faultString", "<string>b</string>")},
      {dictionary({{"/FaultCode", string("four")}}),
       member("faultCode", "<string>four</string>") + unknownString},
      {dictionary({{"faultExtra", string("alone")}}), unknownCode + unknownString},
      {dictionary({{"/FaultExtra", string("more")}}),
       unknownCode + unknownString + member("faultExtra", "<string>more</string>")},
      {dictionary({{"/FaultExtra", string("more")}, {"faultExtra", integer(6)}}),
       unknownCode + unknownString + member("faultExtra", "<i4>6</i4>")},
  };
  for (const auto& row : rows) EXPECT_EQ(fault(Value(), row.fault), document(structure(row.members)));
}

/* What an override was called with. */
struct Call {
  BQTypeRef object;
  std::string value;
};

const BQString* recordCall(BQTypeRef object, BQTypeRef value, void* info) {
  *static_cast<Call*>(info) = {object, notation(value)};
  return BQSTR("<custom/>");
}

TEST(RequestDocument, OfAnInvocationIsWrittenWithItsOverridesAndParameters) {
  vx::XMLRPCWebServiceMethodInvocation invocation(url("http://localhost/"), BQSTR("m"));
  Call call{nullptr, ""};
  VXClientContext context = {0, &call, nullptr, nullptr, nullptr};
  Value owner = string("the handle");
  invocation.setOwner(owner);
  invocation.addSerializationOverride(BQStringGetTypeID(), recordCall, &context);
  invocation.setParameters(dictionary({{"a", string("text")}, {"b", integer(1)}}), nullptr);
  for (int pass = 0; pass < 2; ++pass) {
    EXPECT_EQ(
        bytes(Value::adopt(invocation.constructMessage(nullptr))),
        requestWith(parameters(parameter("            <custom/>") + parameter("            <i4>1</i4>"))));
    EXPECT_EQ(call.object, owner.get());
    EXPECT_EQ(call.value, "'text'");
  }
  vx::XMLRPCWebServiceMethodInvocation nameless(url("http://localhost/"), nullptr);
  EXPECT_EQ(nameless.constructMessage(nullptr), nullptr);
}

}  // namespace
