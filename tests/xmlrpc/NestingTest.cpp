#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"

namespace {

using namespace support;

/* Containers around each other, arrays and dictionaries in turn. */
Value nested(int depth) {
  Value value = string("innermost");
  for (int i = 0; i < depth; ++i) value = i % 2 == 0 ? array({value}) : dictionary({{"k", value}});
  return value;
}

bool canBeWritten(const Value& value) {
  vx::XMLRPCProtocolHandler handler;
  Value parameters = Value::adopt(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
  BQDictionarySetValue(parameters.as<BQDictionary>(), BQSTR("p"), value);
  BQDictionarySetValue(parameters.as<BQDictionary>(), BQSTR("/FaultString"), value);
  Value request = Value::adopt(handler.createRequest(BQSTR("m"), parameters, array({string("p")}), nullptr));
  Value reply = Value::adopt(handler.createReply(nullptr, value));
  EXPECT_EQ(request.get() != nullptr, reply.get() != nullptr);
  return reply.get() != nullptr;
}

TEST(Nesting, IsWrittenToADepthOf512) {
  for (int depth : {0, 1, 511, 512}) EXPECT_TRUE(canBeWritten(nested(depth))) << depth;
  for (int depth : {513, 514, 100000}) EXPECT_FALSE(canBeWritten(nested(depth))) << depth;
  EXPECT_TRUE(canBeWritten(array({nested(511), nested(511)}))) << "side by side";
  Value inFault = dictionary({{"/FaultString", nested(512)}});
  EXPECT_EQ(vx::XMLRPCProtocolHandler().createFault(nullptr, inFault), nullptr)
      << "the fault is a struct itself";
}

TEST(Nesting, ContainersThatHoldThemselvesGiveNoDocumentAtOnce) {
  /* Written out, one that holds itself twice would double at each of 512 levels. */
  for (int times : {1, 2, 50}) {
    Value values = array({}), members = dictionary({});
    for (int i = 0; i < times; ++i) {
      BQArrayAppendValue(values.as<BQArray>(), values);
      BQDictionarySetValue(members.as<BQDictionary>(), string(std::to_string(i)), members);
    }
    EXPECT_FALSE(canBeWritten(values)) << times;
    EXPECT_FALSE(canBeWritten(members)) << times;
    BQArrayRemoveAllValues(values.as<BQArray>());
    BQDictionaryRemoveAllValues(members.as<BQDictionary>());
  }
}

std::string repeated(const std::string& text, int times) {
  std::string result;
  for (int i = 0; i < times; ++i) result += text;
  return result;
}

/* How the reply with that many arrays around each other reads. */
std::string readNested(int depth) {
  std::string document = "<methodResponse><params><param><value>" + repeated("<array><data><value>", depth) +
                         "x" + repeated("</value></data></array>", depth) +
                         "</value></param></params></methodResponse>";
  vx::XMLRPCProtocolHandler handler;
  testing::internal::CaptureStderr();
  Value result =
      Value::adopt(handler.parseReplyData(nullptr, blob(document), kBQStringEncodingUTF8, nullptr));
  testing::internal::GetCapturedStderr();
  return notation(result.get());
}

TEST(Nesting, IsReadToADepthOf512Elements) {
  EXPECT_EQ(readNested(169), "{/Result: " + std::string(169, '[') + "'x'" + std::string(169, ']') + "}");
  for (int depth : {170, 100000}) {
    std::string fault = readNested(depth);
    EXPECT_NE(fault.find("domain: -1, error: -65795"), std::string::npos) << fault;
    EXPECT_NE(fault.find("status 1001)"), std::string::npos) << fault;
  }
}

}  // namespace
