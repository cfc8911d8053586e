#include <VX/VXConstants.h>
#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"
#include "xml/TreeAccess.h"
#include "xmlrpc/ValueReader.h"
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

/* The first value element below `document` as it reads back, with "nothing" for none. */
std::string firstValue(const std::string& document, const BQString* parent) {
  Value parsed = tree(document);
  const BQTree* value = vx::findNamedElement(vx::findNamedElement(parsed, parent), BQSTR("value"));
  const BQString* message = nullptr;
  return value == nullptr ? "nothing" : notation(Value::adopt(vx::parseType(value, &message)).get());
}

TEST(RequestDocument, TakesTheNamesFromTheFirstListThereIs) {
  Value plain = dictionary({{"b", integer(2)}, {"/a", integer(1)}});
  Value recorded =
      dictionary({{"b", integer(2)}, {"a", integer(1)}, {"/VXRecordParamOrder", array({string("a")})}});
  const struct {
    Value parameters;
    Value order;
    const char* written; /* without a value: a nil */
  } rows[] = {{Value(), Value(), ""},
              {dictionary({}), Value(), ""},
              {plain, array({}), ""},
              {plain, Value(), "2 1 "},
              {plain, array({string("/a")}), "1 "},
              {plain, array({string("no"), Value(), string("b")}), "nil nil 2 "},
              {Value(), array({string("a")}), "nil "},
              {recorded, Value(), "1 "},
              {recorded, array({string("b")}), "2 "}};
  for (const auto& row : rows) {
    std::string document = request(string("m"), row.parameters, row.order), written;
    for (size_t start = 0; (start = document.find("<i4>", start)) != std::string::npos; ++start) {
      bool isNil = document.find("(nil)", start) < document.find("\r\n", start);
      written += (isNil ? "nil" : document.substr(start + 4, 1)) + " ";
    }
    EXPECT_EQ(written, row.written) << notation(row.parameters.get()) << " " << notation(row.order.get());
    EXPECT_EQ(document.find("<params>") == std::string::npos, written.empty());
  }
}

TEST(RequestDocument, HasItsMethodNameUnescaped) {
  EXPECT_EQ(
      request(string("a<b&c\u00e9"), Value(), Value()),
      withCRLF(kDeclaration + "  <methodCall>\n    <methodName>a<b&c\u00e9</methodName>\n  </methodCall>\n"));
  EXPECT_EQ(request(Value(), dictionary({}), Value()), "(null)") << "none without a name";
}

TEST(ReplyDocument, HoldsOneValueOrNone) {
  const std::string head = kDeclaration + "<methodResponse>\n", tail = "</methodResponse>\n";
  EXPECT_EQ(reply(Value(), Value()), withCRLF(head + tail));
  EXPECT_EQ(reply(Value(), string("x")), withCRLF(head + R"(  <params>
    <param>
      <value>
        <string>x</string>
      </value>
    </param>
  </params>
)" + tail));
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

TEST(FaultDocument, HoldsTheFaultAsAStruct) {
  const std::string head = kDeclaration + "<methodResponse>\n  <fault>\n",
                    tail = "  </fault>\n</methodResponse>\n";
  EXPECT_EQ(fault(Value(), Value()), withCRLF(head + tail));
  EXPECT_EQ(fault(Value(), dictionary({{"/FaultString", string("<no>")}})), withCRLF(head + R"(    <value>
      <struct>
        <member>
          <name>faultCode</name>
            <value>
              <i4>-1</i4>
            </value>
        </member>
        <member>
          <name>faultString</name>
            <value>
              <string>&lt;no&gt;</string>
            </value>
        </member>
      </struct>
    </value>
)" + tail));
  const std::pair<Value, const char*> rows[] = {
      {dictionary({}), "{faultCode: -1, faultString: 'Unknown Fault'}"},
      {dictionary({{"/FaultCode", integer(4)}, {"faultCode", integer(5)}}),
       "{faultCode: 5, faultString: 'Unknown Fault'}"},
      {dictionary({{"/FaultString", string("a")}, {"faultString", string("b")}, {"ignored", string("c")}}),
       "{faultCode: -1, faultString: 'b'}"},
      {dictionary({{"faultExtra", string("alone")}}), "{faultCode: -1, faultString: 'Unknown Fault'}"},
      {dictionary({{"/FaultExtra", string("more")}, {"/FaultCode", string("four")}}),
       "{faultCode: 'four', faultString: 'Unknown Fault', faultExtra: 'more'}"},
      {dictionary({{"/FaultExtra", string("more")}, {"faultExtra", integer(6)}}),
       "{faultCode: -1, faultString: 'Unknown Fault', faultExtra: 6}"}};
  for (const auto& [entries, read] : rows)
    EXPECT_EQ(firstValue(fault(Value(), entries), BQSTR("fault")), read);
}

/* What an override was called with. */
struct Call {
  BQTypeRef object = nullptr;
  std::string value;

  static const BQString* record(VXMethodInvocationRef object, BQTypeRef value, void* info) {
    *static_cast<Call*>(info) = {object, notation(value)};
    return BQSTR("<custom/>");
  }
};

TEST(RequestDocument, OfAnInvocationIsWrittenWithItsOverridesAndParameters) {
  vx::XMLRPCWebServiceMethodInvocation invocation(url("http://localhost/"), BQSTR("m"));
  Call call;
  VXClientContext context = {0, &call, nullptr, nullptr, nullptr};
  Value owner = string("the handle");
  invocation.setOwner(owner);
  invocation.addSerializationOverride(BQStringGetTypeID(), Call::record, &context);
  invocation.setParameters(dictionary({{"a", string("text")}, {"b", integer(1)}}), nullptr);
  std::string document = bytes(Value::adopt(invocation.constructMessage(nullptr)));
  std::string value = "          <value>\r\n            <custom/>\r\n          </value>\r\n";
  EXPECT_NE(document.find(value), std::string::npos) << document;
  EXPECT_NE(document.find("<i4>1</i4>"), std::string::npos) << document;
  EXPECT_EQ(call.object, owner.get());
  EXPECT_EQ(call.value, "'text'");
  EXPECT_EQ(vx::XMLRPCWebServiceMethodInvocation(url("http://localhost/"), nullptr).constructMessage(nullptr),
            nullptr);
}

}  // namespace
