#include <gtest/gtest.h>

#include <VX/VXConstants.h>

#include <string>

#include "soap/Envelope.h"
#include "soap/SOAPProtocolHandler.h"
#include "support/Values.h"

namespace {

using namespace support;

Value readReply(const std::string& content) {
  vx::SOAPProtocolHandler handler(kVXSOAP2001Protocol);
  return Value::adopt(
      handler.parseReplyData(BQSTR("m"), blob(body(content)), kBQStringEncodingUTF8, nullptr));
}

/* The message of the fault; the start of the result dictionary if there is none. */
std::string messageOf(const std::string& content) {
  Value result = readReply(content);
  BQTypeRef extra = BQDictionaryGetValue(result, kVXFaultExtra);
  if (extra == nullptr) return notation(result.get()).substr(0, 200);
  return text(BQDictionaryGetValue(static_cast<const BQDictionary*>(extra), kVXStreamErrorMessage));
}

std::string numbered(const std::string& start, int number, const std::string& end) {
  return start + std::to_string(number) + end;
}

/* An element that refers twice to the next, and so on. */
std::string doublingChain(int length) {
  std::string content;
  for (int i = 0; i < length; ++i) {
    std::string next = numbered("<x href='#", i + 1, "'/>");
    content += numbered("<r id='", i, "'>") + next + next + "</r>";
  }
  return content + numbered("<r id='", length, "'>x</r>");
}

std::string repeated(const std::string& text, int times) {
  std::string result;
  while (times-- > 0) result += text;
  return result;
}

const std::string kTooMany = "Too many elements are read through references";
const std::string kLoop = "A reference leads back to the element that holds it";

TEST(HostileReferences, EndInAMessage) {
  const std::pair<std::string, std::string> rows[] = {
      {"<m><a href='#1'/></m><r id='1'><b href='#1'/></r>", kLoop},
      {"<m><a href='#1'/></m><r id='1'><b href='#2'/></r><r id='2'><c><d href='#1'/></c></r>", kLoop},
      {"<m id='1'><a href='#1'/></m>", kLoop},
      {"<m><a href='#1'/></m><r id='1' href='#1'/>", "{/Result: {a: {}}, a: {}}"},
      {"<m id='1'><a><b/></a><c><d href='#1'/></c></m>", kLoop},
      {"<m><a href='#1'/>" + repeated("<b>", 300) + "<c href='#1'/>" + repeated("</b>", 300) +
           "</m><r id='1'>" + repeated("<b>", 300) + repeated("</b>", 300) + "</r>",
       "Values are nested too deep"},
      {"<m xmlns:a='" + std::string(4097, 'u') + "'><b/></m>", "A namespace is too long"},
  };
  for (const auto& [content, message] : rows) EXPECT_EQ(messageOf(content), message) << content;
  Value twice = readReply("<m><a href='#1'/></m><m><a href='#1'/></m><r id='1'><b/><c href='#2'/></r>");
  EXPECT_EQ(BQDictionaryGetValue(twice, kVXMethodInvocationResult), nullptr) << "half a value is not shared";
}

TEST(HostileReferences, AreBoundedInNumber) {
  EXPECT_EQ(messageOf("<m><a href='#0'/></m>" + doublingChain(40)), kTooMany);
  EXPECT_NE(messageOf("<m><a href='#0'/></m>" + doublingChain(10)), kTooMany);
  /* Each reference leads to 1000 elements. */
  const std::string references = repeated("<x href='#t'/>", 1000);
  const std::string elements = "<r id='t'>" + repeated("<c/>", 999) + "</r>";
  EXPECT_NE(messageOf("<m>" + references + "</m>" + elements), kTooMany);
  EXPECT_EQ(messageOf("<m>" + references + "<x href='#s'/></m><r id='s'>x</r>" + elements), kTooMany);
  EXPECT_EQ(messageOf(repeated("<m><a href='#0'/></m>", 5000) + doublingChain(14)), kTooMany)
      << "all methods together";
}

TEST(HostileReferences, AreBoundedInTextReadAgain) {
  EXPECT_EQ(messageOf("<m>" + repeated("<x href='#t'/>", 1000) + "</m><r id='t'>" + std::string(100000, 't') +
                      "</r>"),
            "Too much text is read through repeated references");
}

/* Each row is one thing that reading an element looks at. */
TEST(HostileReferences, AreBoundedInWhatTheyMakeBeReadAgain) {
  std::string attributes;
  for (int i = 0; i < 500; ++i) attributes += numbered(" p", i, ":type='u'");
  const std::string much(5000, 't');
  const std::string anchors[] = {
      "<r id='t'>" + much + "</r>",
      "<r id='t'><" + much + "/></r>",
      "<r id='t' type='" + much + "'>x</r>",
      "<r id='t' xmlns:" + much + "='u'>x</r>",
      "<r id='t'" + attributes + ">x</r>",
      "<r id='t' type='x:int'>" + repeated("<x/>", 1000) + "</r>",
      "<r id='t'>" + repeated("<x/>", 50) + "</r>",
  };
  for (const std::string& anchor : anchors) {
    auto referTo = [&anchor](const std::string& reference) {
      return messageOf("<m><a>" + repeated(reference, 2000) + "</a></m>" + anchor);
    };
    EXPECT_TRUE(referTo("<x href='#t'/>").starts_with("{/Result: ")) << anchor.substr(0, 50);
    EXPECT_EQ(referTo("<x xmlns:p='u' href='#t'/>"), "Too much is read again through references")
        << anchor.substr(0, 50) << ", in namespaces that may change its value";
  }
  const std::string some = repeated("<x xmlns:p='u' href='#t'/>", 220);
  EXPECT_TRUE(messageOf("<m><a>" + some + "</a></m>" + anchors[0]).starts_with("{/Result: ")) << "1.1 MiB";
}

TEST(HostileReferences, ToManyElementsAreFoundInOneTable) {
  std::string methods, anchors;
  for (int i = 0; i < 50000; ++i) {
    methods += numbered("<m><a href='#", i, "'/></m>");
    anchors += numbered("<r id='", i, "'>") + numbered("", i, "</r>");
  }
  EXPECT_EQ(messageOf(methods + anchors), "{/Result: {a: '49999'}, a: '49999'}");
}

}  // namespace
