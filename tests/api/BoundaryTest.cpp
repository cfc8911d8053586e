#include <VX/VX.h>
#include <gtest/gtest.h>

#include <string>

#include "support/Constants.h"
#include "support/Values.h"

namespace {

using namespace support;

/* What a call returned, which is released. */
std::string got(BQTypeRef result) {
  return notation(Value::adopt(result).get());
}

/* The object under a type that it may not have. */
template <class T>
T* as(const Value& value) {
  return value.as<T>();
}

void* failToRetain(void* info) {
  ADD_FAILURE() << "a context was retained";
  return info;
}

TEST(Boundary, NullHandlesDoNothing) {
  int info;
  VXClientContext refused = {0, &info, failToRetain, nullptr, nullptr};
  const BQString* name = BQSTR("m");
  Value values = dictionary({}), list = array({}), document = blob("<a/>");
  VXMethodInvocationSetParameters(nullptr, values, list);
  VXMethodInvocationSetProperty(nullptr, name, values);
  VXMethodInvocationAddSerializationOverride(nullptr, 1, nullptr, &refused);
  VXMethodInvocationAddDeserializationOverride(nullptr, name, name, nullptr, &refused);
  VXMethodInvocationSetCallBack(nullptr, nullptr, &refused);
  VXMethodInvocationScheduleWithRunLoop(nullptr, BQRunLoopGetCurrent(), name);
  VXMethodInvocationUnscheduleFromRunLoop(nullptr, BQRunLoopGetCurrent(), name);
  VXProtocolHandlerSetProperty(nullptr, name, values);
  VXProtocolHandlerSetSerializationOverride(nullptr, 1, nullptr, &refused);
  VXProtocolHandlerSetDeserializationOverride(nullptr, name, name, nullptr, &refused);
  EXPECT_EQ(BQGetRetainCount(values), 1);
  const BQArray* order = list;
  EXPECT_EQ(VXMethodInvocationCopyParameters(nullptr, &order), nullptr);
  EXPECT_EQ(order, nullptr);
  const BQTypeRef results[] = {VXMethodInvocationCopyParameters(nullptr, nullptr),
                               VXMethodInvocationCopyProperty(nullptr, name),
                               VXMethodInvocationInvoke(nullptr),
                               VXProtocolHandlerCopyRequestDictionary(nullptr, document),
                               VXProtocolHandlerCopyReplyDictionary(nullptr, name, document),
                               VXProtocolHandlerCopyRequestDocument(nullptr, name, values, list, values),
                               VXProtocolHandlerCopyReplyDocument(nullptr, values, name),
                               VXProtocolHandlerCopyFaultDocument(nullptr, values, values),
                               VXProtocolHandlerCopyProperty(nullptr, name)};
  for (BQTypeRef result : results) EXPECT_EQ(result, nullptr);
}

TEST(Boundary, FunctionsTakeNullAndOtherClasses) {
  const Value other = string("text"), number = integer(1), endpoint = url("http://localhost/");
  char buffer[64] = "";
  const struct {
    const char* call;
    std::string result;
    const char* expected;
  } rows[] = {
      {"invocation, other protocol", got(VXMethodInvocationCreate(endpoint, nullptr, as<BQString>(number))),
       "-"},
      {"handler, other protocol", got(VXProtocolHandlerCreate(buffer, other)), "-"},
      {"fault of another class", std::to_string(VXMethodResultIsFault(as<BQDictionary>(other))), "0"},
      {"kind of null", std::to_string(VXGetVXTypeIDFromBQType(nullptr)), "0"},
      {"class of no kind", std::to_string(VXGetBQTypeIDFromVXTypeID(static_cast<VXTypeID>(15))), "0"},
      {"date, null", std::to_string(vxBQDateToISO8601String(buffer, sizeof buffer, nullptr, 0)), "20"},
      {"text of a null date", buffer, "2001-01-01T00:00:00Z"},
      {"date of another class", std::to_string(vxBQDateToISO8601String(nullptr, 9, as<BQDate>(other), 1)),
       "18"},
      {"date from nothing", got(vxCreateDateFromISO8601(nullptr, 9)), "@-001-11-30T00:00:00"},
  };
  for (const auto& row : rows) EXPECT_EQ(row.result, row.expected) << row.call;
}

TEST(Boundary, InvocationsTakeNullAndOtherClasses) {
  const Value other = string("text"), number = integer(1);
  for (const BQString* protocol : kProtocols) {
    Value handle = Value::adopt(VXMethodInvocationCreate(url("http://localhost/"), BQSTR("m"), protocol));
    auto* invocation = as<OpaqueVXMethodInvocationRef>(handle);
    for (const BQArray* order : {as<BQArray>(number), static_cast<BQArray*>(nullptr)}) {
      VXMethodInvocationSetParameters(invocation, as<BQDictionary>(other), order);
      EXPECT_EQ(VXMethodInvocationCopyParameters(invocation, nullptr), nullptr);
    }
    VXMethodInvocationSetProperty(invocation, nullptr, other);
    EXPECT_EQ(VXMethodInvocationCopyProperty(invocation, nullptr), nullptr);
    VXMethodInvocationAddSerializationOverride(invocation, 0, nullptr, nullptr);
    VXMethodInvocationAddSerializationOverride(invocation, 0xFFFFFFFF, nullptr, nullptr);
    VXMethodInvocationAddDeserializationOverride(invocation, nullptr, as<BQString>(number), nullptr, nullptr);
    VXMethodInvocationSetCallBack(invocation, nullptr, nullptr);
    VXMethodInvocationScheduleWithRunLoop(invocation, nullptr, nullptr);
    VXMethodInvocationScheduleWithRunLoop(invocation, BQRunLoopGetCurrent(), nullptr);
    VXMethodInvocationUnscheduleFromRunLoop(invocation, as<BQRunLoop>(other), as<BQString>(number));
  }
}

bool isNullOr(BQTypeRef result, BQTypeID typeID) {
  return result == nullptr || BQGetTypeID(Value::adopt(result)) == typeID;
}

TEST(Boundary, HandlersTakeNullAndOtherClasses) {
  const Value odd[] = {
      Value(),  integer(1),      string("text"),  dictionary({}), array({string("a"), Value()}),
      blob(""), blob("\0\xff<"), url("http://h/")};
  const BQTypeID ofDocuments = BQDataGetTypeID(), ofResults = BQDictionaryGetTypeID();
  for (const BQString* protocol : kProtocols) {
    Value handle = Value::adopt(VXProtocolHandlerCreate(nullptr, protocol));
    auto* handler = as<OpaqueVXProtocolHandlerRef>(handle);
    testing::internal::CaptureStderr();
    for (const Value& first : odd) {
      auto* name = as<BQString>(first);
      EXPECT_TRUE(isNullOr(VXProtocolHandlerCopyRequestDictionary(handler, first), ofResults));
      for (const Value& second : odd) {
        Value reply = Value::adopt(VXProtocolHandlerCopyReplyDictionary(handler, name, second));
        EXPECT_EQ(reply.get() == nullptr, first.get() == nullptr || second.get() == nullptr);
        EXPECT_TRUE(isNullOr(VXProtocolHandlerCopyReplyDocument(handler, first, second), ofDocuments));
        EXPECT_TRUE(isNullOr(VXProtocolHandlerCopyFaultDocument(handler, first, second), ofDocuments));
        for (const Value& third : odd) {
          Value request =
              Value::adopt(VXProtocolHandlerCopyRequestDocument(handler, name, second, third, first));
          EXPECT_TRUE(request.get() == nullptr || (name != nullptr && BQGetTypeID(request) == ofDocuments));
        }
      }
    }
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(VXProtocolHandlerCopyRequestDictionary(handler, nullptr), nullptr);
  }
}

}  // namespace
