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
    size_t start = 0;
    for (size_t end; (end = pattern.find_first_of("%^", start)) != std::string::npos; start = end + 1)
      (result.append(pattern, start, end - start)) += std::to_string(pattern[end] == '%' ? i : i + 1);
    result.append(pattern, start);
  }
  return result;
}

/* The message of the fault, if there is one, and "read" if there is a result. */
std::string outcomeOf(const std::string& content) {
  Value handler = Value::adopt(VXProtocolHandlerCreate(nullptr, kVXSOAP2001Protocol));
  Value document = blob("<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Body>" + content +
                        "</e:Body></e:Envelope>");
  Value result = Value::adopt(
      VXProtocolHandlerCopyReplyDictionary(handler.as<OpaqueVXProtocolHandlerRef>(), BQSTR("m"), document));
  auto* extra = static_cast<const BQDictionary*>(BQDictionaryGetValue(result, kVXFaultExtra));
  bool isRead = BQDictionaryGetValue(result, kVXMethodInvocationResult) != nullptr;
  return text(BQDictionaryGetValue(extra, kVXStreamErrorMessage)) + (isRead ? " read" : "");
}

TEST(HostileReferences, AreBounded) {
  const std::string tooMany = "Too many elements are read through references";
  const std::string call = "<m><a href='#0'/></m>", doubling = "<r id='%'><x href='#^'/><x href='#^'/></r>";
  const std::string calls = "<m>" + numbered(1000, "<x href='#t'/>"), last = "</m><r id='s'>x</r><r id='t'>";
  const std::string elements = numbered(999, "<c/>") + "</r>",
                    many = numbered(50000, "<m><a href='#%'/></m>");
  const std::string open = numbered(300, "<b>"), close = numbered(300, "</b>");
  const struct {
    const char* what;
    std::string content, outcome;
  } rows[] = {
      {"a short chain that doubles", call + numbered(10, doubling) + "<r id='10'/>", "(null) read"},
      {"a long one", call + numbered(40, doubling) + "<r id='40'/>", tooMany},
      {"many methods together", numbered(5000, call) + numbered(14, doubling) + "<r id='14'/>",
       tooMany + " read"},
      {"a million elements", calls + last + elements, "(null) read"},
      {"one more", calls + "<x href='#s'/>" + last + elements, tooMany},
      {"much text", calls + last + std::string(100000, 't') + "</r>",
       "Too much text is read through repeated references"},
      {"many elements", many + numbered(50000, "<r id='%'>x</r>"), "(null) read"},
      {"many texts between elements", "<m>" + numbered(16385, "t%<x/>") + "</m>",
       "Too much text between elements"},
      {"depth", "<m>" + open + "<c href='#0'/>" + close + "</m><r id='0'>" + open + close + "</r>",
       "Values are nested too deep"},
      {"a long namespace", "<m xmlns:a='" + std::string(4097, 'u') + "'><b/></m>", "A namespace is too long"},
      {"half a value", call + call + "<r id='0'><b/><c href='#2'/></r>",
       "Can't locate anchor element in reply"},
  };
  for (const auto& row : rows) EXPECT_EQ(outcomeOf(row.content), row.outcome) << row.what;
}

/* Each row is one thing that reading an element looks at. */
TEST(HostileReferences, AreBoundedInWhatIsReadAgain) {
  const std::string much(5000, 't');
  const std::string anchors[] = {
      ">" + much,
      "><" + much + "/>",
      " type='" + much + "'>x",
      " xmlns:" + much + "='u'>x",
      numbered(500, " p%:type='u'") + ">x",
      " type='x:int'>" + numbered(1000, "<x/>"),
      ">" + numbered(50, "<x/>"),
  };
  auto referTo = [](const std::string& anchor, int times, const std::string& attributes) {
    std::string references = numbered(times, "<x" + attributes + " href='#t'/>");
    return outcomeOf("<m><a>" + references + "</a></m><r id='t'" + anchor + "</r>");
  };
  for (const std::string& anchor : anchors) {
    EXPECT_EQ(referTo(anchor, 2000, ""), "(null) read") << anchor.substr(0, 50);
    EXPECT_EQ(referTo(anchor, 2000, " xmlns:p='u'"), "Too much is read again through references")
        << anchor.substr(0, 50) << ", in namespaces that may change its value";
  }
  EXPECT_EQ(referTo(anchors[0], 220, " xmlns:p='u'"), "(null) read");
}

}  // namespace
