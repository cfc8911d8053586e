#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"
#include "transport/WebServiceResult.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"
#include "xmlrpc/XMLRPCWebServiceMethodInvocation.h"

namespace {

using namespace support;

std::string read(const std::string& document, unsigned long encoding = kBQStringEncodingUTF8) {
  testing::internal::CaptureStderr();
  Value result =
      Value::adopt(vx::XMLRPCProtocolHandler().parseReplyData(BQSTR("m"), blob(document), encoding, nullptr));
  testing::internal::GetCapturedStderr();
  return notation(result.get());
}

/* A reply that cannot be used. */
std::string unusable(const std::string& message) {
  return "{/kVXResultIsFault: true, /FaultString: '/BQStreamFault', /FaultCode: -65794, /FaultExtra: {msg: "
         "'" +
         message + "', domain: -1, error: -65795}}";
}

TEST(Reply, GivesItsFirstValue) {
  const std::pair<const char*, const char*> rows[] = {
      {"<methodResponse><params><param><value><i4>5</i4></value></param></params></methodResponse>",
       "{/Result: 5}"},
      {"<wrapped><x:METHODRESPONSE><PARAMS><any><other>text</other></any></PARAMS></x:METHODRESPONSE></"
       "wrapped>",
       "{/Result: 'text'}"},
      {"<methodResponse><params><param><value>1</value><value>2</value></param><param/></params></"
       "methodResponse>",
       "{/Result: '1'}"},
      {"<methodResponse><params><param><value><string/></value></param></params></methodResponse>", "{}"},
      {"<methodResponse><params><param>text</param></params></methodResponse>", "{}"},
  };
  for (auto [document, result] : rows) EXPECT_EQ(read(document), result) << document;
  EXPECT_EQ(read("<methodResponse><params><p><v>\xe9</v></p></params></methodResponse>",
                 kBQStringEncodingISOLatin1),
            "{/Result: '\u00e9'}");
}

TEST(Reply, ThatCannotBeUsedIsAFaultWithAMessage) {
  const std::pair<const char*, const char*> rows[] = {
      {"<methodCall/>", "Can't find a 'methodResponse' element"},
      {"<methodResponse/>", "Can't find any child of the 'methodResponse' element"},
      {"<methodResponse><other/></methodResponse>",
       "Child of the 'methodResponse' must be <fault> or <params>"},
      {"<methodResponse><x:params/></methodResponse>",
       "Child of the 'methodResponse' must be <fault> or <params>"},
      {"<methodResponse><params/></methodResponse>", "<params> must contain a single <param> entry"},
      {"<methodResponse><params><param/></params></methodResponse>",
       "<param> must contain a single <value> entry"},
      {"<methodResponse><params><param><value><nil/></value></param></params></methodResponse>",
       "Don't know how to deserialize nil"},
      {"<methodResponse><fault/></methodResponse>", "<fault> must contain a <value>"},
      {"<methodResponse><fault><value/></fault></methodResponse>", "Can't parse <fault>."},
      {"<methodResponse><fault><value>text</value></fault></methodResponse>", "Can't parse <fault>."},
      {"<methodResponse><fault><value><struct/></value></fault></methodResponse>", "Can't parse <fault>."},
      {"<methodResponse><fault><value><struct><member/></struct></value></fault></methodResponse>",
       "empty <member> element"},
  };
  for (auto [document, message] : rows) EXPECT_EQ(read(document), unusable(message)) << document;
}

TEST(Reply, ThatDoesNotParseGivesTheParsersMessage) {
  for (const char* document :
       {"", "text", "<methodResponse>", "<a>\xff</a>", "<?xml version='1.0' encoding='x?'?><a/>"}) {
    vx::XMLRPCProtocolHandler handler;
    const BQString* message = nullptr;
    testing::internal::CaptureStderr();
    Value result =
        Value::adopt(handler.parseReplyData(nullptr, blob(document), kBQStringEncodingUTF8, &message));
    testing::internal::GetCapturedStderr();
    Value held = Value::adopt(message);
    EXPECT_EQ(notation(result.get()), unusable(text(message))) << document;
    EXPECT_NE(text(message).find(" (line "), std::string::npos) << text(message);
  }
}

std::string faultDocument(const std::string& members) {
  return "<methodResponse><FAULT><value><struct>" + members + "</struct></value></FAULT></methodResponse>";
}

std::string member(const std::string& name, const std::string& value) {
  return "<member><name>" + name + "</name><value>" + value + "</value></member>";
}

TEST(Reply, OfAFaultGivesItsCodeAndString) {
  auto fault = [](const std::string& entries) {
    return "{/kVXResultIsFault: true, /FaultCode: " + entries + "}";
  };
  const std::string text = member("faultString", "<string>Too many parameters.</string>");
  const std::string known = ", /FaultString: 'Too many parameters.'";
  EXPECT_EQ(read(faultDocument(member("faultCode", "<int>4</int>") + text)), fault("4" + known));
  EXPECT_EQ(read(faultDocument(text)), fault("-1" + known)) << "no code";
  EXPECT_EQ(read(faultDocument(text + member("faultCode", "4"))), fault("-1" + known)) << "a string";
  EXPECT_EQ(read(faultDocument(text + member("faultCode", "<i4>4294967296</i4>"))), fault("0" + known))
      << "too large";
  EXPECT_EQ(read(faultDocument(text + member("faultCode", "<double>7</double>"))), fault("7" + known));
  EXPECT_EQ(read(faultDocument(member("faultExtra", "x"))), fault("-1"))
      << "no string, and nothing else is taken";
  EXPECT_EQ(read(faultDocument(member("faultString", "<i4>5</i4>"))), fault("-1, /FaultString: 5"))
      << "as it is";
}

TEST(Reply, ToAnInvocationIsReadTheSame) {
  vx::XMLRPCWebServiceMethodInvocation invocation(nullptr, BQSTR("m"));
  vx::WebServiceResult result;
  invocation.parseReply(&result, tree("<methodResponse><params><p><v>x</v></p></params></methodResponse>"));
  EXPECT_EQ(notation(result.resultDictionary.get()), "{/Result: 'x'}");
}

}  // namespace
