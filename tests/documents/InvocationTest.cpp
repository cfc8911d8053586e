/* An invocation writes its request and reads the reply as a handler with the same settings does. */
#include "transport/Call.h"

namespace {

using namespace support;

const BQString* writeText(VXMethodInvocationRef object, BQTypeRef, void* info) {
  *static_cast<BQTypeRef*>(info) = object;
  return BQSTR("<custom/>");
}

BQTypeRef readNumber(VXMethodInvocationRef, const BQTree*, const BQTree*, void*) {
  return BQRetain(integer(5).get());
}

TEST(Invocation, WritesAndReadsWithItsSettings) {
  for (const BQString* protocol : kProtocols) {
    BQTypeRef object = nullptr;
    VXClientContext context = {0, &object, nullptr, nullptr, nullptr};
    Value held = Value::adopt(VXProtocolHandlerCreate(nullptr, protocol)), text = string("x");
    auto* handler = held.as<OpaqueVXProtocolHandlerRef>();
    Value request = dictionary({{"/VXMethodName", string("m")}}),
          parameters = dictionary({{"b", text}, {"a", integer(1)}});
    Value answer = Value::adopt(VXProtocolHandlerCopyReplyDocument(handler, request, text.get()));
    ScriptedPeer peer({reply(okResponse(bytes(answer)))});
    vx::TestCall call(peer.url(), protocol, BQSTR("m"));
    call.setParameters(parameters).set(kVXMethodInvocationResultParameterName, BQSTR("Result"));
    call.set(kVXSOAPMethodNamespaceURI, BQSTR("urn:x"));
    VXMethodInvocationAddSerializationOverride(call.get(), BQStringGetTypeID(), writeText, &context);
    VXMethodInvocationAddDeserializationOverride(call.get(), BQSTR("*"), BQSTR("Result"), readNumber,
                                                 nullptr);
    EXPECT_EQ(vx::valueOf(call.invoke()), protocol == kVXXMLRPCProtocol ? "x" : "5");
    EXPECT_EQ(object, call.get());
    EXPECT_EQ(vx::valueOf(vx::TestCall(peer.url(), protocol, nullptr).invoke()),
              "Can't serialize request 2 -65794");
    VXProtocolHandlerSetProperty(handler, kVXSOAPMethodNamespaceURI, BQSTR("urn:x"));
    VXProtocolHandlerSetSerializationOverride(handler, BQStringGetTypeID(), writeText, &context);
    std::string expected = bytes(Value::adopt(VXProtocolHandlerCopyRequestDocument(
        handler, BQSTR("m"), parameters, array({string("b"), string("a")}), nullptr)));
    EXPECT_TRUE(peer.requests().at(0).ends_with("\r\n\r\n" + expected)) << peer.requests().at(0);
  }
}

BQTypeRef decline(VXMethodInvocationRef, const BQTree*, const BQTree*, void* calls) {
  ++*static_cast<int*>(calls);
  return nullptr;
}

TEST(Override, ThatDeclinesIsAskedOnceMoreAboutAParameterOfARequest) {
  const struct {
    const char* content;
    int callsForReply, callsForRequest;
  } rows[] = {
      {"<m><v>5</v></m>", 1, 2},
      {"<m><w><v>5</v></w></m>", 2, 2},
      {"<m><a href='#1'/><b href='#1'/></m><r id='1'><v>5</v></r>", 2, 2},
  };
  for (const auto& row : rows) {
    Value held = Value::adopt(VXProtocolHandlerCreate(nullptr, kVXSOAP2001Protocol));
    auto* handler = held.as<OpaqueVXProtocolHandlerRef>();
    int calls = 0;
    VXClientContext context = {0, &calls, nullptr, nullptr, nullptr};
    VXProtocolHandlerSetDeserializationOverride(handler, BQSTR("*"), BQSTR("v"), decline, &context);
    Value document = blob("<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Body>" +
                          std::string(row.content) + "</e:Body></e:Envelope>");
    Value reply = Value::adopt(VXProtocolHandlerCopyReplyDictionary(handler, BQSTR("m"), document));
    EXPECT_EQ(std::exchange(calls, 0), row.callsForReply) << row.content;
    EXPECT_NE(notation(reply.get()).find("v: '5'"), std::string::npos) << "the library reads it";
    Value::adopt(VXProtocolHandlerCopyRequestDictionary(handler, document));
    EXPECT_EQ(calls, row.callsForRequest) << row.content;
  }
}

}  // namespace
