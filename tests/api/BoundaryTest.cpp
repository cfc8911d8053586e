#include <VX/VX.h>
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

#include "support/Values.h"

namespace {

using namespace support;

const BQString* const kProtocols[] = {kVXXMLRPCProtocol, kVXSOAP1999Protocol, kVXSOAP2001Protocol};

struct Row {
  const char* call;
  std::function<std::string()> make;
  const char* result;
};

void check(std::initializer_list<Row> rows) {
  for (const Row& row : rows) EXPECT_EQ(row.make(), row.result) << row.call;
}

/* What a call returned, which is released. */
std::string got(BQTypeRef result) {
  return notation(Value::adopt(result).get());
}

/* The object under a type that it may not have. */
template <class T>
T* as(const Value& value) {
  return value.as<T>();
}

/* A context that must not be retained. */
VXClientContext refusedContext() {
  static int info;
  auto fail = [](void* given) -> void* {
    ADD_FAILURE() << "a context was retained";
    return given;
  };
  return {0, &info, fail, nullptr, nullptr};
}

TEST(Boundary, NullHandlesGiveNullAndDoNothing) {
  VXClientContext refused = refusedContext();
  const BQString* name = BQSTR("m");
  Value values = dictionary({}), list = array({}), document = blob("<a/>");
  BQRunLoop* loop = BQRunLoopGetCurrent();
  check({
      {"CopyParameters", [] { return got(VXMethodInvocationCopyParameters(nullptr, nullptr)); }, "-"},
      {"CopyParameters, order",
       [&] {
         const BQArray* order = list;
         std::string parameters = got(VXMethodInvocationCopyParameters(nullptr, &order));
         return parameters + notation(order);
       },
       "--"},
      {"CopyProperty", [&] { return got(VXMethodInvocationCopyProperty(nullptr, name)); }, "-"},
      {"Invoke", [] { return got(VXMethodInvocationInvoke(nullptr)); }, "-"},
      {"ResultIsFault", [] { return std::to_string(VXMethodResultIsFault(nullptr)); }, "0"},
      {"without result",
       [&] {
         VXMethodInvocationSetParameters(nullptr, values, list);
         VXMethodInvocationSetProperty(nullptr, name, name);
         VXMethodInvocationAddSerializationOverride(nullptr, 1, nullptr, &refused);
         VXMethodInvocationAddDeserializationOverride(nullptr, name, name, nullptr, &refused);
         VXMethodInvocationSetCallBack(nullptr, nullptr, &refused);
         VXMethodInvocationScheduleWithRunLoop(nullptr, loop, name);
         VXMethodInvocationUnscheduleFromRunLoop(nullptr, loop, name);
         VXProtocolHandlerSetProperty(nullptr, name, name);
         VXProtocolHandlerSetSerializationOverride(nullptr, 1, nullptr, &refused);
         VXProtocolHandlerSetDeserializationOverride(nullptr, name, name, nullptr, &refused);
         return std::to_string(BQGetRetainCount(values));
       },
       "1"},
      {"CopyRequestDictionary",
       [&] { return got(VXProtocolHandlerCopyRequestDictionary(nullptr, document)); }, "-"},
      {"CopyReplyDictionary",
       [&] { return got(VXProtocolHandlerCopyReplyDictionary(nullptr, name, document)); }, "-"},
      {"CopyRequestDocument",
       [&] { return got(VXProtocolHandlerCopyRequestDocument(nullptr, name, values, list, values)); }, "-"},
      {"CopyReplyDocument", [&] { return got(VXProtocolHandlerCopyReplyDocument(nullptr, values, name)); },
       "-"},
      {"CopyFaultDocument", [&] { return got(VXProtocolHandlerCopyFaultDocument(nullptr, values, values)); },
       "-"},
      {"handler's CopyProperty", [&] { return got(VXProtocolHandlerCopyProperty(nullptr, name)); }, "-"},
  });
}

TEST(Boundary, FunctionsWithoutHandleTakeNullAndOtherClasses) {
  const Value text = string("text");
  char buffer[64] = "";
  check({
      {"invocation, null", [] { return got(VXMethodInvocationCreate(nullptr, nullptr, nullptr)); }, "-"},
      {"invocation, no URL",
       [] { return got(VXMethodInvocationCreate(nullptr, BQSTR("m"), kVXXMLRPCProtocol)); }, "-"},
      {"invocation, other protocol",
       [&] { return got(VXMethodInvocationCreate(url("http://h/"), BQSTR("m"), as<BQString>(integer(1)))); },
       "-"},
      {"handler, other protocol", [&] { return got(VXProtocolHandlerCreate(buffer, text)); }, "-"},
      {"handler, ignored argument", [&] { return got(VXProtocolHandlerCreate(buffer, kVXXMLRPCProtocol)); },
       "OpaqueVXProtocolHandlerRef"},
      {"fault of another class",
       [&] { return std::to_string(VXMethodResultIsFault(as<BQDictionary>(text))); }, "0"},
      {"kind of null", [] { return std::to_string(VXGetVXTypeIDFromBQType(nullptr)); }, "0"},
      {"class of no kind",
       [] { return std::to_string(VXGetBQTypeIDFromVXTypeID(static_cast<VXTypeID>(15))); }, "0"},
      {"date, null",
       [&] { return std::to_string(vxBQDateToISO8601String(buffer, sizeof buffer, nullptr, 0)) + buffer; },
       "202001-01-01T00:00:00Z"},
      {"date of another class",
       [&] { return std::to_string(vxBQDateToISO8601String(nullptr, 99, as<BQDate>(text), 1)); }, "18"},
      {"date from nothing", [] { return got(vxCreateDateFromISO8601(nullptr, 0)); }, "@-001-11-30T00:00:00"},
  });
}

TEST(Boundary, InvocationsTakeNullAndOtherClasses) {
  for (const BQString* protocol : kProtocols) {
    Value handle = Value::adopt(VXMethodInvocationCreate(url("http://localhost/"), BQSTR("m"), protocol));
    auto* invocation = as<OpaqueVXMethodInvocationRef>(handle);
    const Value text = string("text"), number = integer(1);
    auto parameters = [&] {
      const BQArray* order = nullptr;
      std::string values = got(VXMethodInvocationCopyParameters(invocation, &order));
      return values + got(order);
    };
    check({
        {"parameters of other classes",
         [&] {
           VXMethodInvocationSetParameters(invocation, as<BQDictionary>(text), as<BQArray>(number));
           return parameters();
         },
         "--"},
        {"parameters of another class without order",
         [&] {
           VXMethodInvocationSetParameters(invocation, as<BQDictionary>(text), nullptr);
           return parameters();
         },
         "-[]"},
        {"null key",
         [&] {
           VXMethodInvocationSetProperty(invocation, nullptr, text);
           VXMethodInvocationSetProperty(invocation, nullptr, nullptr);
           return got(VXMethodInvocationCopyProperty(invocation, nullptr));
         },
         "-"},
        {"no function and no context",
         [&] {
           VXMethodInvocationAddSerializationOverride(invocation, 0, nullptr, nullptr);
           VXMethodInvocationAddSerializationOverride(invocation, 0xFFFFFFFF, nullptr, nullptr);
           VXMethodInvocationAddDeserializationOverride(invocation, nullptr, nullptr, nullptr, nullptr);
           VXMethodInvocationAddDeserializationOverride(invocation, as<BQString>(number),
                                                        as<BQString>(number), nullptr, nullptr);
           VXMethodInvocationSetCallBack(invocation, nullptr, nullptr);
           return std::string();
         },
         ""},
        {"no run loop and no mode",
         [&] {
           VXMethodInvocationScheduleWithRunLoop(invocation, nullptr, nullptr);
           VXMethodInvocationUnscheduleFromRunLoop(invocation, nullptr, nullptr);
           VXMethodInvocationScheduleWithRunLoop(invocation, BQRunLoopGetCurrent(), nullptr);
           VXMethodInvocationUnscheduleFromRunLoop(invocation, as<BQRunLoop>(text), as<BQString>(number));
           return std::string();
         },
         ""},
    });
  }
}

/* The detail of the fault that a call ends with before it reaches the network. */
std::string failureOf(const BQURL* endpoint, const BQString* methodName) {
  Value handle = Value::adopt(VXMethodInvocationCreate(endpoint, methodName, kVXXMLRPCProtocol));
  Value result = Value::adopt(VXMethodInvocationInvoke(as<OpaqueVXMethodInvocationRef>(handle)));
  EXPECT_TRUE(VXMethodResultIsFault(result));
  return notation(BQDictionaryGetValue(
      static_cast<const BQDictionary*>(BQDictionaryGetValue(result, kVXFaultExtra)), kVXStreamErrorMessage));
}

TEST(Boundary, CallsThatCannotBeMadeEndWithAFault) {
  EXPECT_EQ(failureOf(url("mailto:someone"), BQSTR("m")), "'Missing host in URL'");
  EXPECT_EQ(failureOf(as<BQURL>(string("http://localhost/")), BQSTR("m")), "'Missing host in URL'");
  EXPECT_EQ(failureOf(url("http://localhost/"), nullptr), "'Can't serialize request'");
}

TEST(Boundary, HandlersTakeNullAndOtherClasses) {
  const Value number = integer(1), text = string("text"), empty = dictionary({});
  const Value odd[] = {Value(),         number,          text, empty, array({text, Value()}), blob(""),
                       blob("\0\xff<"), url("http://h/")};
  for (const BQString* protocol : kProtocols) {
    Value handle = Value::adopt(VXProtocolHandlerCreate(nullptr, protocol));
    auto* handler = as<OpaqueVXProtocolHandlerRef>(handle);
    auto isNullOr = [](BQTypeRef result, BQTypeID typeID) {
      Value held = Value::adopt(result);
      return result == nullptr || BQGetTypeID(held) == typeID;
    };
    testing::internal::CaptureStderr();
    for (const Value& first : odd) {
      auto* name = as<BQString>(first);
      EXPECT_TRUE(isNullOr(VXProtocolHandlerCopyRequestDictionary(handler, first), BQDictionaryGetTypeID()));
      for (const Value& second : odd) {
        EXPECT_TRUE(
            isNullOr(VXProtocolHandlerCopyReplyDictionary(handler, name, second), BQDictionaryGetTypeID()));
        EXPECT_TRUE(isNullOr(VXProtocolHandlerCopyReplyDocument(handler, first, second), BQDataGetTypeID()));
        EXPECT_TRUE(isNullOr(VXProtocolHandlerCopyFaultDocument(handler, first, second), BQDataGetTypeID()));
        for (const Value& third : odd) {
          EXPECT_TRUE(isNullOr(VXProtocolHandlerCopyRequestDocument(handler, name, second, third, first),
                               BQDataGetTypeID()));
        }
      }
      VXProtocolHandlerSetProperty(handler, name, text);
      EXPECT_EQ(got(VXProtocolHandlerCopyProperty(handler, name)), first.get() == nullptr ? "-" : "'text'");
    }
    testing::internal::GetCapturedStderr();
    check({
        {"no request", [&] { return got(VXProtocolHandlerCopyRequestDictionary(handler, nullptr)); }, "-"},
        {"no method name",
         [&] { return got(VXProtocolHandlerCopyReplyDictionary(handler, nullptr, blob("<a/>"))); }, "-"},
        {"no reply", [&] { return got(VXProtocolHandlerCopyReplyDictionary(handler, text, nullptr)); }, "-"},
        {"no name for a request",
         [&] { return got(VXProtocolHandlerCopyRequestDocument(handler, nullptr, empty, nullptr, nullptr)); },
         "-"},
    });
  }
}

TEST(Boundary, OverridesMayReturnOtherClasses) {
  auto returnNumber = [](BQTypeRef, BQTypeRef, void*) {
    return static_cast<const BQString*>(integer(5).release());
  };
  for (const BQString* protocol : kProtocols) {
    Value handle = Value::adopt(VXProtocolHandlerCreate(nullptr, protocol));
    auto* handler = as<OpaqueVXProtocolHandlerRef>(handle);
    VXProtocolHandlerSetSerializationOverride(handler, BQStringGetTypeID(), returnNumber, nullptr);
    Value parameters = dictionary({{"a", string("x")}});
    Value document =
        Value::adopt(VXProtocolHandlerCopyRequestDocument(handler, BQSTR("m"), parameters, nullptr, nullptr));
    EXPECT_EQ(bytes(document).find("<string>"), std::string::npos);
  }
}

}  // namespace
