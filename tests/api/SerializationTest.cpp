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

/* What is written of an invocation; "-" if there is none. */
std::string written(const Value& invocation) {
  Value data =
      Value::adopt(VXMethodInvocationCopySerialization(invocation.as<OpaqueVXMethodInvocationRef>()));
  return notation(Value::adopt(BQPropertyListCreateFromXMLData(data, nullptr)).get());
}

TEST(Serialization, HasWhatIsSetAndOfTheRightKind) {
  const std::pair<std::string, std::string> rows[] = {
      {"", "-"},
      {"<key>ProtocolType</key><string>xml-rpc</string>", "-"},
      {"<key>ProtocolType</key><true/>", "-"},
      {"<key>MethodName</key><string>m</string>", "-"},
      {"<key>ProtocolType</key><string>SOAP-2001</string><key>MethodName</key><array/>"
       "<key>ServiceURL</key><true/><key>ParamOrder</key><dict/><key>ParamValues</key><array/>"
       "<key>Properties</key><string>x</string>",
       "{ProtocolType: 'SOAP-2001', Properties: {}}"},
      {"<key>ProtocolType</key><string>XML-RPC</string>"
       "<key>ParamValues</key><dict><key>a</key><string>x</string></dict>",
       "{ProtocolType: 'XML-RPC', ParamValues: {a: 'x'}, Properties: {}}"},
  };
  for (const auto& [entries, list] : rows) {
    EXPECT_EQ(written(Value::adopt(recreate(listOf(entries)))), list) << entries;
  }
  EXPECT_EQ(written(Value::adopt(create(kVXXMLRPCProtocol, nullptr))),
            "{ProtocolType: 'XML-RPC', ServiceURL: 'http://h:1/p%20q?r#s', Properties: {}}");
  for (const char* bytes : {"", "nonsense", "<plist version=\"1.0\"><array/></plist>"}) {
    EXPECT_EQ(recreate(blob(bytes)), nullptr) << bytes;
  }
  Value message = Value::adopt(BQHTTPMessageCreateRequest(BQSTR("POST"), url("http://h/"), nullptr));
  Value invocation = Value::adopt(create(kVXXMLRPCProtocol));
  VXMethodInvocationSetProperty(invocation.as<OpaqueVXMethodInvocationRef>(), kVXHTTPMessage, message);
  EXPECT_EQ(written(invocation), "-") << "a message is no property-list value";
}

}  // namespace
