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
    VXProtocolHandlerSetProperty(handler, kVXSOAPMethodNamespaceURI, BQSTR("urn:x"));
    VXProtocolHandlerSetSerializationOverride(handler, BQStringGetTypeID(), writeText, &context);
    std::string expected = bytes(Value::adopt(VXProtocolHandlerCopyRequestDocument(
        handler, BQSTR("m"), parameters, array({string("b"), string("a")}), nullptr)));
    EXPECT_TRUE(peer.requests().at(0).ends_with("\r\n\r\n" + expected)) << peer.requests().at(0);
  }
}

}  // namespace
