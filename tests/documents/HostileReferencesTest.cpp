/* The reader limits the work that references can cause. */
#include <VX/VX.h>
#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;

/* The pattern many times, with "%" for the number from 0 on and "^" for the next. */
std::string numbered(int count, const std::string& pattern) {
  std::string result;
  for (int i = 0; i < count; ++i) {
    for (char character : pattern) {
      bool isNumber = character == '%' || character == '^';
      result += isNumber ? std::to_string(character == '%' ? i : i + 1) : std::string(1, character);
    }
  }
  return result;
}

/* The message of the fault, or that there is none. */
std::string outcomeOf(const std::string& content) {
  Value handler = Value::adopt(VXProtocolHandlerCreate(nullptr, kVXSOAP2001Protocol));
  Value document = blob("<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Body>" + content +
                        "</e:Body></e:Envelope>");
  Value result = Value::adopt(
      VXProtocolHandlerCopyReplyDictionary(handler.as<OpaqueVXProtocolHandlerRef>(), BQSTR("m"), document));
  auto* extra = static_cast<const BQDictionary*>(BQDictionaryGetValue(result, kVXFaultExtra));
  if (extra != nullptr) return text(BQDictionaryGetValue(extra, kVXStreamErrorMessage));
  return BQDictionaryGetValue(result, kVXMethodInvocationResult) != nullptr ? "read" : "no result";
}

TEST(HostileReferences, AreBounded) {
  const std::string tooMany = "Too many elements are read through references";
  const std::string call = "<m><a href='#0'/></m>", doubling = "<r id='%'><x href='#^'/><x href='#^'/></r>";
  const std::string calls = "<m>" + numbered(1000, "<x href='#t'/>"), last = "</m><r id='s'>x</r><r id='t'>";
  const std::string elements = numbered(999, "<c/>") + "</r>";
  const struct {
    const char* what;
    std::string content, outcome;
  } rows[] = {
      {"a short chain that doubles", call + numbered(10, doubling) + "<r id='10'/>", "read"},
      {"a long one", call + numbered(40, doubling) + "<r id='40'/>", tooMany},
      {"many methods together", numbered(5000, call) + numbered(14, doubling) + "<r id='14'/>", tooMany},
      {"a million elements", calls + last + elements, "read"},
      {"one more", calls + "<x href='#s'/>" + last + elements, tooMany},
      {"a text again and again", calls + last + std::string(100000, 't') + "</r>",
       "Too much text is read through repeated references"},
      {"many elements once",
       "<m>" + numbered(100000, "<x href='#%'/>") + "</m>" + numbered(100000, "<r id='%'>x</r>"), "read"},
      {"two halves of a broken value",
       "<m><a href='#1'/></m><m><a href='#1'/></m><r id='1'><b/><c href='#2'/></r>",
       "Can't locate anchor element in reply"},
      {"values too deep",
       "<m><a href='#1'/>" + numbered(300, "<b>") + "<c href='#1'/>" + numbered(300, "</b>") +
           "</m><r id='1'>" + numbered(300, "<b>") + numbered(300, "</b>") + "</r>",
       "Values are nested too deep"},
      {"a long namespace", "<m xmlns:a='" + std::string(4097, 'u') + "'><b/></m>", "A namespace is too long"},
      {"by many methods", numbered(20000, "<m><a href='#%'/></m>") + numbered(20000, "<r id='%'>x</r>"),
       "read"},
  };
  for (const auto& row : rows) EXPECT_EQ(outcomeOf(row.content), row.outcome) << row.what;
}

/* Each anchor is large in one thing that reading an element looks at. */
TEST(HostileReferences, AreBoundedInWhatIsReadAgain) {
  const std::string much(5000, 't');
  const std::string anchors[] = {
      "<r id='t'>" + much + "</r>",
      "<r id='t'><" + much + "/></r>",
      "<r id='t' type='" + much + "'>x</r>",
      "<r id='t' xmlns:" + much + "='u'>x</r>",
      "<r id='t'" + numbered(500, " p%:type='u'") + ">x</r>",
      "<r id='t' type='x:int'>" + numbered(1000, "<x/>") + "</r>",
      "<r id='t'>" + numbered(50, "<x/>") + "</r>",
  };
  for (const std::string& anchor : anchors) {
    SCOPED_TRACE(anchor.substr(0, 50));
    const std::string shared = "<x href='#t'/>", inOtherNamespaces = "<x xmlns:p='u' href='#t'/>";
    EXPECT_EQ(outcomeOf("<m><a>" + numbered(2000, shared) + "</a></m>" + anchor), "read");
    EXPECT_EQ(outcomeOf("<m><a>" + numbered(2000, inOtherNamespaces) + "</a></m>" + anchor),
              "Too much is read again through references");
  }
}

}  // namespace
