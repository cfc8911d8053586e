/*
 * Values go out to SOAP servers of two other makes in other processes, and come back: in the rpc form
 * through both generations, and in the document form.
 */
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

#include <BQ/BQ.h>
#include <VX/VX.h>
#include <gtest/gtest.h>

#include "support/PeerProcess.h"
#include "support/Values.h"

namespace {

using support::Value;

using Parameters = std::initializer_list<std::pair<const char*, Value>>;

/* An invocation with its parameters, in their order. */
Value makeInvocation(const PeerProcess& peer, const char* method, const BQString* protocol,
                     const BQString* methodNamespace, Parameters parameters) {
  Value invocation =
      Value::adopt(VXMethodInvocationCreate(support::url(peer.url("/")), support::string(method), protocol));
  Value values = support::dictionary({});
  Value order = support::array({});
  for (const auto& [name, value] : parameters) {
    BQDictionarySetValue(values.as<BQDictionary>(), support::string(name), value.get());
    BQArrayAppendValue(order.as<BQArray>(), support::string(name));
  }
  auto* handle = invocation.as<OpaqueVXMethodInvocationRef>();
  VXMethodInvocationSetParameters(handle, values, order);
  VXMethodInvocationSetProperty(handle, kVXSOAPMethodNamespaceURI, methodNamespace);
  return invocation;
}

Value invoke(const Value& invocation) {
  return Value::adopt(VXMethodInvocationInvoke(invocation.as<OpaqueVXMethodInvocationRef>()));
}

class SOAPRPCEcho : public testing::TestWithParam<const BQString*> {
 protected:
  static void SetUpTestSuite() { peer_ = std::make_unique<PeerProcess>("perl", SOAP_PEER_SCRIPT); }
  static void TearDownTestSuite() { peer_.reset(); }

  static Value call(const char* method, Parameters parameters, const BQString* resultName = nullptr) {
    Value invocation = makeInvocation(*peer_, method, GetParam(), BQSTR("urn:echo"), parameters);
    auto* handle = invocation.as<OpaqueVXMethodInvocationRef>();
    VXMethodInvocationSetProperty(handle, kVXSOAPBodyEncodingStyle, kVXSOAPStyleRPC);
    VXMethodInvocationSetProperty(handle, kVXMethodInvocationResultParameterName, resultName);
    return invoke(invocation);
  }

  static Value echo(const char* method, const Value& value) {
    Value result = call(method, {{"value", value}}, BQSTR("value"));
    EXPECT_FALSE(VXMethodResultIsFault(result)) << support::text(result.get());
    return Value::retain(BQDictionaryGetValue(result, kVXMethodInvocationResult));
  }

  static std::unique_ptr<PeerProcess> peer_;
};

std::unique_ptr<PeerProcess> SOAPRPCEcho::peer_;

INSTANTIATE_TEST_SUITE_P(Generations, SOAPRPCEcho, testing::Values(kVXSOAP1999Protocol, kVXSOAP2001Protocol),
                         [](const auto& generation) { return generation.index == 0 ? "1999" : "2001"; });

TEST_P(SOAPRPCEcho, GivesBackSimpleValues) {
  const std::pair<const char*, Value> rows[] = {
      {"echoString", support::string("plain")},
      {"echoString", support::string(" <a> &amp; \"b\" 'c' ]]> \xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 ")},
      {"echoString", support::string("two\nlines\tand a tab")},
      {"echoString", support::string("007")},
      {"echoString", support::string(std::string(300000, 'x'))},
      {"echoInt", support::integer(0)},
      {"echoInt", support::integer(-2147483648)},
      {"echoInt", support::integer(2147483647)},
      {"echoDouble", support::real(-1234.5625)},
      {"echoDouble", support::real(0.1)},
      {"echoDouble", support::real(-2.5e-300)},
      {"echoBoolean", Value::retain(kBQBooleanTrue)},
      {"echoBoolean", Value::retain(kBQBooleanFalse)},
      {"echoDate", support::date(0)},
      {"echoDate", support::date(-1)},
      {"echoBase64", support::blob(std::string("\0\1\2\377", 4))},
      {"echoBase64", support::blob(std::string(100001, '\xFE'))},
  };
  for (const auto& [method, value] : rows) {
    SCOPED_TRACE(support::notation(value.get()).substr(0, 60));
    EXPECT_EQ(support::notation(echo(method, value).get()), support::notation(value.get()));
  }
}

TEST_P(SOAPRPCEcho, GivesBackContainers) {
  Value point = support::dictionary({{"x", support::integer(1)}, {"y", support::real(2.5)}});
  Value deep = support::string("bottom");
  for (int depth = 0; depth < 40; ++depth) deep = support::array({support::dictionary({{"in", deep}})});
  const Value containers[] = {
      support::array({}),
      support::array({support::integer(1), support::string("two"), support::real(3.5)}),
      support::array({support::array({support::integer(1)}), support::array({}), support::array({point})}),
      support::array({point, point, point}),
      support::dictionary({{"points", support::array({point, point})}, {"origin", point}}),
      deep,
  };
  for (const Value& container : containers) {
    /* Equal, since the server has the members in an order of its own. */
    Value echoed = echo("echo", container);
    EXPECT_TRUE(BQEqual(echoed.get(), container.get())) << support::notation(echoed.get()) << "\nnot\n"
                                                        << support::notation(container.get());
  }
}

TEST_P(SOAPRPCEcho, GivesEachOutputBesideAllOfThem) {
  Value result = call("divide", {{"dividend", support::integer(17)}, {"divisor", support::integer(5)}});
  EXPECT_EQ(support::notation(BQDictionaryGetValue(result, kVXMethodInvocationResult)),
            "{quotient: 3, remainder: 2}");
  EXPECT_EQ(support::notation(BQDictionaryGetValue(result, BQSTR("remainder"))), "2");
}

TEST_P(SOAPRPCEcho, GivesAnEmptyDictionaryForNoOutput) {
  Value result = call("nothing", {});
  EXPECT_FALSE(VXMethodResultIsFault(result));
  EXPECT_EQ(support::notation(BQDictionaryGetValue(result, kVXMethodInvocationResult)), "{}");
}

TEST_P(SOAPRPCEcho, GivesAFaultWithItsText) {
  Value result = call("fault", {{"code", support::string("Client.Nope")}, {"text", support::string("<no>")}});
  EXPECT_TRUE(VXMethodResultIsFault(result));
  EXPECT_EQ(support::notation(BQDictionaryGetValue(result, kVXFaultCode)), "-1");
  EXPECT_EQ(support::text(BQDictionaryGetValue(result, kVXFaultString)), "<no>");
  EXPECT_EQ(BQDictionaryGetValue(result, kVXFaultExtra), nullptr);
}

class SOAPDocumentEcho : public testing::Test {
 protected:
  Value call(const char* method, Parameters parameters) {
    return invoke(makeInvocation(peer_, method, kVXSOAP2001Protocol, BQSTR("urn:orders"), parameters));
  }

  PeerProcess peer_{"php", SOAP_DOCUMENT_PEER_SCRIPT};
};

/* The server reads each member as its schema says, and its reply carries texts without types. */
TEST_F(SOAPDocumentEcho, IsUnderstoodByAServerWithASchema) {
  Value line = support::dictionary({{"article", support::string("a <b> \xC3\xA9")},
                                    {"pieces", support::integer(3)},
                                    {"price", support::real(2.5)},
                                    {"gift", Value::retain(kBQBooleanTrue)},
                                    {"due", support::date(0)},
                                    {"stamp", support::blob("\1\377")}});
  Value result = call("describe", {{"line", line}});
  EXPECT_FALSE(VXMethodResultIsFault(result)) << support::text(result.get());
  EXPECT_EQ(support::text(BQDictionaryGetValue(result, BQSTR("ns1:text"))),
            "{\"article\":\"61203c623e20c3a9\",\"pieces\":3,\"price\":2.5,\"gift\":true,"
            "\"due\":\"323030312d30312d30315430303a30303a30305a\",\"stamp\":\"01ff\"}");
  EXPECT_EQ(support::notation(BQDictionaryGetValue(result, BQSTR("ns1:line"))),
            "{ns1:article: 'a <b> \xC3\xA9', ns1:pieces: '3', ns1:price: '2.5', ns1:gift: 'true', "
            "ns1:due: '2001-01-01T00:00:00Z', ns1:stamp: 'Af8='}");
}

TEST_F(SOAPDocumentEcho, GivesAFaultWithItsText) {
  Value result = call("refuse", {{"reason", support::string("no & out")}});
  EXPECT_TRUE(VXMethodResultIsFault(result));
  EXPECT_EQ(support::text(BQDictionaryGetValue(result, kVXFaultString)), "no & out");
}

}  // namespace
