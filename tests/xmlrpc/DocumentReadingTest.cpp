#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"
#include "transport/WebServiceResult.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"
#include "xmlrpc/XMLRPCWebServiceMethodInvocation.h"

namespace {

using namespace support;

/* The request dictionary, or the message. */
std::string readRequest(const std::string& document, unsigned long encoding = kBQStringEncodingUTF8) {
  const BQString* message = BQSTR("left from before");
  testing::internal::CaptureStderr();
  Value request = Value::adopt(vx::XMLRPCProtocolHandler().parsePostData(blob(document), encoding, &message));
  testing::internal::GetCapturedStderr();
  EXPECT_NE(request.get() == nullptr, message == nullptr) << document;
  return message == nullptr ? notation(request.get()) : text(Value::adopt(message).get());
}

std::string call(const std::string& parameters) {
  return "<methodCall><methodName>m</methodName>" + parameters + "</methodCall>";
}

/* The request dictionary for the method m. */
std::string requestWith(const std::string& parameters, const std::string& order) {
  return "{/VXTextEncoding: 134217984, /VXMethodName: 'm', /VXMethodParameters: {" + parameters +
         "}, /VXMethodParameterOrder: [" + order + "]}";
}

TEST(Request, GivesItsParametersByPosition) {
  const std::string one = "<param><value>1</value></param>", two = "<param><value>2</value></param>";
  const std::string both = requestWith("anon0: '1', anon1: '2'", "'anon0', 'anon1'");
  const struct {
    std::string parameters;
    std::string request;
    const char* why;
  } rows[] = {
      {"", requestWith("", ""), "no parameters"},
      {"<params/>", requestWith("", ""), "an empty list of them"},
      {"<params>" + one + two + "</params>", both, "two"},
      {"<params>" + one + "<param><value/></param>" + two + "</params>", both,
       "an empty one is dropped and the next takes its number"},
      {"<params><param><value>1</value><value>2</value></param></params>", both, "two values in one"},
      {"<PARAMS><x:Param><other/>text<y:VALUE>1</y:VALUE></x:Param></PARAMS>",
       requestWith("anon0: '1'", "'anon0'"), "names in any case and with any prefix"},
      {"<params>" + one + "</params><params>" + two + "</params>", requestWith("anon0: '2'", "'anon0'"),
       "each list begins with the same number"},
      {"<methodName>m</methodName>", requestWith("", ""), "the last name counts"},
  };
  for (const auto& row : rows) EXPECT_EQ(readRequest(call(row.parameters)), row.request) << row.why;
  EXPECT_EQ(readRequest("<methodCall><methodName>\xe9</methodName></methodCall>", kBQStringEncodingISOLatin1),
            "{/VXTextEncoding: 513, /VXMethodName: '\u00e9', /VXMethodParameters: {}, "
            "/VXMethodParameterOrder: []}")
      << "the encoding is kept for the reply";
  EXPECT_EQ(readRequest("<?xml version='1.0'?><other><methodCall/></other>"),
            "{/VXTextEncoding: 134217984, /VXXMLRPCTopLevelExtensions: [BQTree]}")
      << "another root is all that there is";
}

TEST(Request, ThatCannotBeReadGivesAMessage) {
  const std::pair<const char*, const char*> rows[] = {
      {"<methodCall/>", "<methodName> missing for request"},
      {"<methodCall><methodName/></methodCall>", "Can't parse string"},
      {"<methodCall><methodName><b>m</b></methodName></methodCall>", "<methodName> missing for request"},
      {"<methodCall><params><param><value><nil/></value></param></params></methodCall>",
       "Don't know how to deserialize nil"},
      {"<methodCall><params><param><value><array/></value></param></params><methodName/></methodCall>",
       "<array> should only containa single <data> element"}, /* the first message */
  };
  for (auto [document, message] : rows) EXPECT_EQ(readRequest(document), message) << document;
  for (const char* document : {"", "text", "<methodCall>", "<methodCall/><methodCall/>"}) {
    EXPECT_NE(readRequest(document).find(" (line "), std::string::npos) << document;
    testing::internal::CaptureStderr();
    EXPECT_EQ(vx::XMLRPCProtocolHandler().parsePostData(blob(document), kBQStringEncodingUTF8, nullptr),
              nullptr);
    testing::internal::GetCapturedStderr();
  }
  EXPECT_EQ(vx::XMLRPCProtocolHandler().parsePostData(blob("<methodCall/>"), kBQStringEncodingUTF8, nullptr),
            nullptr);
}

/* The result dictionary of a reply. */
std::string readReply(const std::string& document, unsigned long encoding = kBQStringEncodingUTF8) {
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

std::string response(const std::string& content) {
  return "<methodResponse>" + content + "</methodResponse>";
}

std::string responseOf(const std::string& value) {
  return response("<params><param>" + value + "</param></params>");
}

TEST(Reply, GivesItsFirstValue) {
  const std::pair<std::string, const char*> rows[] = {
      {responseOf("<value><i4>5</i4></value>"), "{/Result: 5}"},
      {"<a><x:METHODRESPONSE><PARAMS><any><other>text</other></any></PARAMS></x:METHODRESPONSE></a>",
       "{/Result: 'text'}"},
      {responseOf("<value>1</value><value>2</value></param><param>"), "{/Result: '1'}"},
      {responseOf("<value><string/></value>"), "{}"},
      {responseOf("text"), "{}"},
  };
  for (const auto& [document, result] : rows) EXPECT_EQ(readReply(document), result) << document;
  EXPECT_EQ(readReply(responseOf("<v>\xe9</v>"), kBQStringEncodingISOLatin1), "{/Result: '\u00e9'}");
  vx::WebServiceResult result;
  vx::XMLRPCWebServiceMethodInvocation(nullptr, BQSTR("m")).parseReply(&result, tree(responseOf("<v>x</v>")));
  EXPECT_EQ(notation(result.resultDictionary.get()), "{/Result: 'x'}") << "to an invocation the same";
}

TEST(Reply, ThatCannotBeUsedIsAFaultWithAMessage) {
  const std::pair<std::string, const char*> rows[] = {
      {"<methodCall/>", "Can't find a 'methodResponse' element"},
      {response(""), "Can't find any child of the 'methodResponse' element"},
      {response("<other/>"), "Child of the 'methodResponse' must be <fault> or <params>"},
      {response("<x:params/>"), "Child of the 'methodResponse' must be <fault> or <params>"},
      {response("<params/>"), "<params> must contain a single <param> entry"},
      {responseOf(""), "<param> must contain a single <value> entry"},
      {responseOf("<value><nil/></value>"), "Don't know how to deserialize nil"},
      {response("<fault/>"), "<fault> must contain a <value>"},
      {response("<fault><value/></fault>"), "Can't parse <fault>."},
      {response("<fault><value>text</value></fault>"), "Can't parse <fault>."},
      {response("<fault><value><struct/></value></fault>"), "Can't parse <fault>."},
      {response("<fault><value><struct><member/></struct></value></fault>"), "empty <member> element"},
  };
  for (const auto& [document, message] : rows) EXPECT_EQ(readReply(document), unusable(message)) << document;
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

TEST(Reply, OfAFaultGivesItsCodeAndString) {
  auto member = [](const std::string& name, const std::string& value) {
    return "<member><name>" + name + "</name><value>" + value + "</value></member>";
  };
  const std::string text = member("faultString", "<string>Too many</string>");
  const std::string known = ", /FaultString: 'Too many'";
  const struct {
    std::string members;
    std::string entries;
    const char* why;
  } rows[] = {
      {member("faultCode", "<int>4</int>") + text, "4" + known, "the usual fault"},
      {text, "-1" + known, "no code"},
      {text + member("faultCode", "4"), "-1" + known, "a string for a code"},
      {text + member("faultCode", "<i4>4294967296</i4>"), "0" + known, "a code that is too large"},
      {text + member("faultCode", "<double>7</double>"), "7" + known, "a code of another kind"},
      {member("faultExtra", "x"), "-1", "no string, and nothing else is taken"},
      {member("faultString", "<i4>5</i4>"), "-1, /FaultString: 5", "a string of another kind as it is"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(readReply(response("<FAULT><value><struct>" + row.members + "</struct></value></FAULT>")),
              "{/kVXResultIsFault: true, /FaultCode: " + row.entries + "}")
        << row.why;
  }
}

}  // namespace
