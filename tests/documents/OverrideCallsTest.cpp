/* How often overrides are called. */
#include <VX/VX.h>
#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;

BQTypeRef decline(VXMethodInvocationRef, const BQTree*, const BQTree*, void* calls) {
  ++*static_cast<int*>(calls);
  return nullptr;
}

TEST(OverrideCalls, AreOneForAnElementAndOneMoreForAParameter) {
  const std::tuple<std::string, int, int> rows[] = {
      {"<m><v>5</v></m>", 1, 2},
      {"<m><w><v>5</v></w></m>", 2, 2},
      {"<m><a href='#1'/><b href='#1'/></m><r id='1'><v>5</v></r>", 2, 2},
  };
  for (const auto& [content, callsForReply, callsForRequest] : rows) {
    int calls = 0;
    VXClientContext context = {0, &calls, nullptr, nullptr, nullptr};
    Value held = Value::adopt(VXProtocolHandlerCreate(nullptr, kVXSOAP2001Protocol));
    auto* handler = held.as<OpaqueVXProtocolHandlerRef>();
    VXProtocolHandlerSetDeserializationOverride(handler, BQSTR("*"), BQSTR("v"), decline, &context);
    Value document = blob("<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Body>" +
                          content + "</e:Body></e:Envelope>");
    Value reply = Value::adopt(VXProtocolHandlerCopyReplyDictionary(handler, BQSTR("m"), document));
    EXPECT_NE(notation(reply.get()).find("v: '5'"), std::string::npos) << "the library reads it";
    EXPECT_EQ(calls, callsForReply) << content;
    Value::adopt(VXProtocolHandlerCopyRequestDictionary(handler, document));
    EXPECT_EQ(calls, callsForReply + callsForRequest) << content;
  }
}

}  // namespace
