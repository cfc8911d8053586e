#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"

namespace {

using namespace support;

/* The request dictionary, or the message. */
std::string read(const std::string& document, unsigned long encoding = kBQStringEncodingUTF8) {
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
  const std::string two = requestWith("anon0: '1', anon1: 3", "'anon0', 'anon1'");
  const struct {
    std::string parameters;
    std::string request;
    const char* why;
  } rows[] = {
      {"", requestWith("", ""), "no parameters"},
      {"<params/>", requestWith("", ""), "an empty list of them"},
      {"<params><param><value>1</value></param><param><value><i4>3</i4></value></param></params>", two,
       "two"},
      {"<params><param><value>1</value></param><param><value/></param><param><value><i4>3</i4></value></"
       "param></params>",
       two, "an empty one is dropped and the next takes its number"},
      {"<params><param><value>1</value><value><i4>3</i4></value></param></params>", two, "two values in one"},
      {"<PARAMS><x:Param><other/>text<y:VALUE>1</y:VALUE></x:Param></PARAMS>",
       requestWith("anon0: '1'", "'anon0'"), "names in any case and with any prefix"},
      {"<params><param><value>1</value></param></params><params><param><value>2</value></param></params>",
       requestWith("anon0: '2'", "'anon0'"), "each list begins with the same number"},
      {"<methodName>m</methodName>", requestWith("", ""), "the last name counts"},
  };
  for (const auto& row : rows) EXPECT_EQ(read(call(row.parameters)), row.request) << row.why;
}

TEST(Request, KeepsTheEncodingForTheReply) {
  EXPECT_EQ(read("<methodCall><methodName>\xe9</methodName></methodCall>", kBQStringEncodingISOLatin1),
            "{/VXTextEncoding: 513, /VXMethodName: '\u00e9', /VXMethodParameters: {}, "
            "/VXMethodParameterOrder: []}");
}

TEST(Request, WithAnotherRootHoldsItAlone) {
  EXPECT_EQ(read("<?xml version='1.0'?><other><methodCall/></other>"),
            "{/VXTextEncoding: 134217984, /VXXMLRPCTopLevelExtensions: [BQTree]}");
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
  for (auto [document, message] : rows) EXPECT_EQ(read(document), message) << document;
  for (const char* document : {"", "text", "<methodCall>", "<methodCall/><methodCall/>"}) {
    EXPECT_NE(read(document).find(" (line "), std::string::npos) << document;
    testing::internal::CaptureStderr();
    EXPECT_EQ(vx::XMLRPCProtocolHandler().parsePostData(blob(document), kBQStringEncodingUTF8, nullptr),
              nullptr);
    testing::internal::GetCapturedStderr();
  }
  EXPECT_EQ(vx::XMLRPCProtocolHandler().parsePostData(blob("<methodCall/>"), kBQStringEncodingUTF8, nullptr),
            nullptr);
}

}  // namespace
