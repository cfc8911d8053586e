#include <gtest/gtest.h>

#include <VX/VX.h>

#include "api/MethodInvocationHandle.h"
#include "support/Constants.h"
#include "support/Values.h"

namespace {

using namespace support;

VXMethodInvocationRef create(const BQString* protocol, const BQString* methodName = BQSTR("m")) {
  return VXMethodInvocationCreate(url("http://h:1/p%20q?r#s"), methodName, protocol);
}

VXMethodInvocationRef recreate(const BQData* data) {
  return VXMethodInvocationCreateFromSerialization(data);
}

/* The serialized form of a property list of one dictionary. */
Value listOf(const std::string& entries) {
  return blob("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>" + entries + "</dict></plist>");
}

TEST(Serialization, KeepsEverythingThatIsAPropertyList) {
  for (const BQString* protocol : kProtocols) {
    Value original = Value::adopt(create(protocol));
    auto* handle = original.as<OpaqueVXMethodInvocationRef>();
    Value parameters = dictionary({{"a", integer(1)},
                                   {"b", array({string(" <&\xC3\xA9> "), real(0.1), date(12.5),
                                                blob(std::string_view("\x00\xFF", 2))})}});
    VXMethodInvocationSetParameters(handle, parameters, array({string("b"), string("a"), string("c")}));
    VXMethodInvocationSetProperty(handle, kVXMethodInvocationTimeoutValue, integer(5));
    VXMethodInvocationSetProperty(handle, kVXHTTPFollowsRedirects, kBQBooleanFalse);
    VXMethodInvocationSetProperty(handle, kVXSOAPBodyEncodingStyle, string("rpc"));
    Value data = Value::adopt(VXMethodInvocationCopySerialization(handle));
    Value list = Value::adopt(BQPropertyListCreateFromXMLData(data, nullptr));
    EXPECT_EQ(BQDictionaryGetCount(list), 6);

    Value copy = Value::adopt(recreate(data));
    auto* copied = copy.as<OpaqueVXMethodInvocationRef>();
    ASSERT_NE(copied, nullptr);
    EXPECT_EQ(bytes(Value::adopt(VXMethodInvocationCopySerialization(copied))), bytes(data));
    EXPECT_EQ(bytes(Value::adopt(copied->wrapped->constructMessage(nullptr))),
              bytes(Value::adopt(handle->wrapped->constructMessage(nullptr))))
        << "the protocol, the method, the parameters and the style are the same; a text is not the constant";
    EXPECT_EQ(Value::adopt(VXMethodInvocationCopyProperty(copied, kVXHTTPFollowsRedirects)).get(),
              kBQBooleanFalse);
  }
}

TEST(Serialization, LeavesOutWhatIsNotSet) {
  Value bare = Value::adopt(create(kVXXMLRPCProtocol, nullptr));
  Value data = Value::adopt(VXMethodInvocationCopySerialization(bare.as<OpaqueVXMethodInvocationRef>()));
  EXPECT_EQ(notation(Value::adopt(BQPropertyListCreateFromXMLData(data, nullptr)).get()),
            "{ProtocolType: 'XML-RPC', ServiceURL: 'http://h:1/p%20q?r#s', Properties: {}}");
}

TEST(Serialization, OfAnythingElseIsRefused) {
  Value invocation = Value::adopt(create(kVXXMLRPCProtocol));
  auto* handle = invocation.as<OpaqueVXMethodInvocationRef>();
  Value message = Value::adopt(BQHTTPMessageCreateRequest(BQSTR("POST"), url("http://h/"), nullptr));
  VXMethodInvocationSetProperty(handle, kVXHTTPMessage, message.get());
  EXPECT_EQ(VXMethodInvocationCopySerialization(handle), nullptr);
  EXPECT_EQ(VXMethodInvocationCopySerialization(nullptr), nullptr);

  EXPECT_EQ(recreate(nullptr), nullptr);
  for (const char* bytes : {"", "nonsense", "<plist version=\"1.0\"><array/></plist>"}) {
    EXPECT_EQ(recreate(blob(bytes)), nullptr) << bytes;
  }
  for (const char* entries : {"", "<key>ProtocolType</key><string>xml-rpc</string>",
                              "<key>ProtocolType</key><true/>", "<key>MethodName</key><string>m</string>"}) {
    EXPECT_EQ(recreate(listOf(entries)), nullptr) << entries;
  }
}

TEST(Serialization, EntriesOfWrongKindsCountAsMissing) {
  Value invocation = Value::adopt(
      recreate(listOf("<key>ProtocolType</key><string>SOAP-2001</string><key>MethodName</key><array/>"
                      "<key>ServiceURL</key><true/><key>ParamOrder</key><dict/><key>ParamValues</key><array/>"
                      "<key>Properties</key><string>x</string>")));
  auto* handle = invocation.as<OpaqueVXMethodInvocationRef>();
  ASSERT_NE(handle, nullptr);
  const BQArray* order = nullptr;
  EXPECT_EQ(VXMethodInvocationCopyParameters(handle, &order), nullptr);
  EXPECT_EQ(order, nullptr);
  EXPECT_EQ(handle->wrapped->getServiceURL(), nullptr);
  Value result = Value::adopt(VXMethodInvocationInvoke(handle));
  EXPECT_TRUE(VXMethodResultIsFault(result));
}

TEST(Serialization, ParametersWithoutAnOrderGetNone) {
  Value invocation =
      Value::adopt(recreate(listOf("<key>ProtocolType</key><string>XML-RPC</string>"
                                   "<key>ParamValues</key><dict><key>a</key><integer>1</integer></dict>")));
  const BQArray* order = nullptr;
  Value parameters =
      Value::adopt(VXMethodInvocationCopyParameters(invocation.as<OpaqueVXMethodInvocationRef>(), &order));
  EXPECT_EQ(notation(parameters.get()).substr(0, 4), "{a: ");
  EXPECT_EQ(order, nullptr);
}

}  // namespace
