/* Behaviour of handlers that a list of cases cannot express, and public conversions. */
#include <cmath>

#include "transport/Call.h"

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

Value inEnvelope(const std::string& content) {
  return blob("<e:Envelope xmlns:e='http://schemas.xmlsoap.org/soap/envelope/'><e:Body>" + content +
              "</e:Body></e:Envelope>");
}

/* The message of the fault, if there is one, and "read" if there is a result. */
std::string outcomeOf(const std::string& content) {
  auto handler = BQAdopt(VXProtocolHandlerCreate(nullptr, kVXSOAP2001Protocol));
  Value result =
      Value::adopt(VXProtocolHandlerCopyReplyDictionary(handler.get(), BQSTR("m"), inEnvelope(content)));
  auto* extra = static_cast<const BQDictionary*>(BQDictionaryGetValue(result, kVXFaultExtra));
  bool isRead = BQDictionaryGetValue(result, kVXMethodInvocationResult) != nullptr;
  return text(BQDictionaryGetValue(extra, kVXStreamErrorMessage)) + (isRead ? " read" : "");
}

TEST(HostileReferences, AreBounded) {
  const std::string tooMany = "Too many elements are read through references";
  const std::string call = "<m><a href='#0'/></m>", doubling = "<r id='%'><x href='#^'/><x href='#^'/></r>";
  const std::string calls = "<m>" + numbered(1000, "<x href='#t'/>"), last = "</m><r id='s'>x</r><r id='t'>";
  const std::string elements = numbered(999, "<c/>") + "</r>", open = numbered(300, "<b>"),
                    close = numbered(300, "</b>");
  const std::tuple<const char*, std::string, std::string> rows[] = {
      {"a short chain that doubles", call + numbered(10, doubling) + "<r id='10'/>", "(null) read"},
      {"a long one", call + numbered(40, doubling) + "<r id='40'/>", tooMany},
      {"many methods together", numbered(5000, call) + numbered(14, doubling) + "<r id='14'/>",
       tooMany + " read"},
      {"a million elements", calls + last + elements, "(null) read"},
      {"one more", calls + "<x href='#s'/>" + last + elements, tooMany},
      {"much text", calls + last + std::string(100000, 't') + "</r>",
       "Too much text is read through repeated references"},
      {"many elements", numbered(50000, "<m><a href='#%'/></m>") + numbered(50000, "<r id='%'>x</r>"),
       "(null) read"},
      {"many texts between elements", "<m>" + numbered(16385, "t%<x/>") + "</m>",
       "Too much text between elements"},
      {"depth", "<m>" + open + "<c href='#0'/>" + close + "</m><r id='0'>" + open + close + "</r>",
       "Values are nested too deep"},
      {"a long namespace", "<m xmlns:a='" + std::string(4097, 'u') + "'><b/></m>", "A namespace is too long"},
      {"half a value", call + call + "<r id='0'><b/><c href='#2'/></r>",
       "Can't locate anchor element in reply"},
  };
  for (const auto& [what, content, outcome] : rows) EXPECT_EQ(outcomeOf(content), outcome) << what;
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

BQTypeRef decline(VXMethodInvocationRef, const BQTree*, const BQTree*, void* calls) {
  ++*static_cast<int*>(calls);
  return nullptr;
}

TEST(Overrides, AreCalledOnceForAnElementAndOnceMoreForAParameter) {
  const std::tuple<std::string, int, int> rows[] = {
      {"<m><v>5</v></m>", 1, 2},
      {"<m><w><v>5</v></w></m>", 2, 2},
      {"<m><a href='#1'/><b href='#1'/></m><r id='1'><v>5</v></r>", 2, 2},
  };
  for (const auto& [content, callsForReply, callsForRequest] : rows) {
    int calls = 0;
    VXClientContext context = {0, &calls, nullptr, nullptr, nullptr};
    auto handler = BQAdopt(VXProtocolHandlerCreate(nullptr, kVXSOAP2001Protocol));
    VXProtocolHandlerSetDeserializationOverride(handler.get(), BQSTR("*"), BQSTR("v"), decline, &context);
    Value::adopt(VXProtocolHandlerCopyReplyDictionary(handler.get(), BQSTR("m"), inEnvelope(content)));
    EXPECT_EQ(std::exchange(calls, 0), callsForReply) << content;
    Value::adopt(VXProtocolHandlerCopyRequestDictionary(handler.get(), inEnvelope(content)));
    EXPECT_EQ(calls, callsForRequest) << content;
  }
}

TEST(Documents, IndentNoDeeperThanThirtyBlanksAndDescribeOtherClasses) {
  auto handler = BQAdopt(VXProtocolHandlerCreate(nullptr, kVXSOAP2001Protocol));
  Value request = dictionary({{"/VXMethodName", string("m")}}), value = url("http://h/?a&b");
  const std::string comment =
      " <!-- UNKNOWN PARAMETER TYPE " + std::to_string(BQGetTypeID(value)) + " -->\r\n";
  for (size_t level = 5; level < 25; ++level, value = array({value})) {
    const std::string name = level == 5 ? "Result>" : "item_0>", indent(std::min<size_t>(2 * level, 30), ' ');
    std::string document =
        bytes(Value::adopt(VXProtocolHandlerCopyReplyDocument(handler.get(), request, value.get())));
    std::string line = "\r\n" + indent + "<" + name + "http://h/?a&b</" + name + comment;
    EXPECT_NE(document.find(line), std::string::npos) << document;
  }
}

TEST(Kinds, StandForClasses) {
  std::vector<Value> values = valuesOf("null true 5L 5d '' @2001-01-01T00:00:00 <> [] {}");
  for (size_t i = 0; i < values.size(); ++i) {
    auto kind = static_cast<VXTypeID>(i + 1);
    EXPECT_EQ(VXGetVXTypeIDFromBQType(values[i].get()), kind);
    EXPECT_EQ(VXGetBQTypeIDFromVXTypeID(kind), BQGetTypeID(values[i].get())) << kind;
  }
  EXPECT_EQ(VXGetVXTypeIDFromBQType(url("http://h/").get()), kVXTypeUnknown);
  for (int none : {0, 10}) EXPECT_EQ(VXGetBQTypeIDFromVXTypeID(static_cast<VXTypeID>(none)), 0u);
}

TEST(Dates, AreWrittenAsFarAsTheBufferHolds) {
  const std::string text = "12345-01-02T03:04:05Z";
  Value value = date(BQGregorianDateGetAbsoluteTime({12345, 1, 2, 3, 4, 5}));
  for (size_t size = 0; size <= 23; ++size) {
    std::string buffer(32, '#');
    EXPECT_EQ(vxBQDateToISO8601String(buffer.data(), size, value, 0), 21);
    std::string expected = size == 0 ? "" : text.substr(0, size - 1) + '\0';
    EXPECT_EQ(buffer, expected + std::string(32 - expected.size(), '#'));
  }
  for (double time : {1e300, -1e300, double{INFINITY}, -double{INFINITY}, std::nan("")})
    EXPECT_LT(vxBQDateToISO8601String(nullptr, 0, date(time), 1), 30);
}

TEST(PropertyList, RefusesKeysAndDatesThatItCannotHoldAndTellsTheLine) {
  Value numbered = dictionary({});
  BQDictionarySetValue(numbered.as<BQDictionary>(), integer(1).get(), BQSTR("x"));
  for (const Value& value : {numbered, date(NAN), date(INFINITY), date(-1e17)})
    EXPECT_EQ(BQPropertyListCreateXMLData(value.get()), nullptr);
  /* A fraction that rounds up to a second must not be lost. */
  Value early = Value::adopt(BQPropertyListCreateXMLData(date(-1e-300).get()));
  EXPECT_NE(bytes(early).find("<date>2001-01-01T00:00:00Z</date>"), std::string::npos);
  const BQString* message = nullptr;
  EXPECT_EQ(BQPropertyListCreateFromXMLData(blob("<plist>\n<true></plist>"), &message), nullptr);
  EXPECT_EQ(text(Value::adopt(message).get()), "mismatched tag (line 2)");
}

const BQString* writeText(VXMethodInvocationRef object, BQTypeRef, void* info) {
  *static_cast<BQTypeRef*>(info) = object;
  return BQSTR("<custom/>");
}

BQTypeRef readNumber(VXMethodInvocationRef, const BQTree*, const BQTree*, void*) {
  return BQRetain(integer(5).get());
}

/* An invocation writes its request and reads the reply as a handler with the same settings does. */
TEST(Invocation, WritesAndReadsWithItsSettings) {
  for (const BQString* protocol : kProtocols) {
    BQTypeRef object = nullptr;
    VXClientContext context = {0, &object, nullptr, nullptr, nullptr};
    auto handler = BQAdopt(VXProtocolHandlerCreate(nullptr, protocol));
    Value request = dictionary({{"/VXMethodName", string("m")}}), text = string("x");
    Value parameters = dictionary({{"b", text}, {"a", integer(1)}});
    Value answer = Value::adopt(VXProtocolHandlerCopyReplyDocument(handler.get(), request, text.get()));
    ScriptedPeer peer({reply(okResponse(bytes(answer)))});
    vx::TestCall call(peer.url(), protocol, BQSTR("m"));
    call.setParameters(parameters).set(kVXMethodInvocationResultParameterName, BQSTR("Result"));
    call.set(kVXSOAPMethodNamespaceURI, BQSTR("urn:x"));
    VXMethodInvocationAddSerializationOverride(call.get(), BQStringGetTypeID(), writeText, &context);
    VXMethodInvocationAddDeserializationOverride(call.get(), BQSTR("*"), BQSTR("Result"), readNumber,
                                                 nullptr);
    EXPECT_EQ(call.invoke(), protocol == kVXXMLRPCProtocol ? "x" : "5");
    EXPECT_EQ(object, call.get());
    VXProtocolHandlerSetProperty(handler.get(), kVXSOAPMethodNamespaceURI, BQSTR("urn:x"));
    VXProtocolHandlerSetSerializationOverride(handler.get(), BQStringGetTypeID(), writeText, &context);
    std::string expected = bytes(Value::adopt(VXProtocolHandlerCopyRequestDocument(
        handler.get(), BQSTR("m"), parameters, array({string("b"), string("a")}), nullptr)));
    EXPECT_TRUE(peer.requests().at(0).ends_with("\r\n\r\n" + expected)) << peer.requests().at(0);
  }
}

}  // namespace
