/* Properties of written documents that need more values than a list of cases can hold, and public
 * conversions. */
#include <VX/VX.h>
#include <gtest/gtest.h>

#include <cmath>

#include "support/Values.h"

namespace {

using namespace support;

std::string replyWith(const Value& value, const BQString* protocol) {
  Value handler = Value::adopt(VXProtocolHandlerCreate(nullptr, protocol));
  Value request = dictionary({{"/VXMethodName", string("m")}});
  auto* document =
      VXProtocolHandlerCopyReplyDocument(handler.as<OpaqueVXProtocolHandlerRef>(), request, value.get());
  return bytes(Value::adopt(document));
}

TEST(Documents, EscapeFiveCharactersWhereverTheyStand) {
  for (auto [character, reference] :
       {std::pair('\'', "&apos;"), {'"', "&quot;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'&', "&amp;"}}) {
    for (size_t before = 0; before < 9; ++before) {
      for (size_t count : {1, 600}) {
        std::string plain(before, 'x'), escaped = plain;
        for (size_t i = 0; i < count; ++i) plain += character, escaped += reference;
        std::string document = replyWith(string(plain + "yyyyyyyy"), kVXXMLRPCProtocol);
        EXPECT_NE(document.find("<string>" + escaped + "yyyyyyyy</string>"), std::string::npos) << document;
      }
    }
  }
}

TEST(Documents, IndentNoDeeperThanThirtyBlanks) {
  Value value = integer(1);
  for (size_t level = 5; level < 25; ++level, value = array({value})) {
    std::string line = "\r\n" + std::string(std::min<size_t>(2 * level, 30), ' ') + "<";
    line += level == 5 ? "Result" : "item_0";
    EXPECT_NE(replyWith(value, kVXSOAP2001Protocol).find(line + " xsi:type=\"xsd:int\">"), std::string::npos);
  }
}

TEST(Documents, DescribeAValueOfAnotherClass) {
  Value value = url("http://h/?a&b");
  std::string line = "<Result>http://h/?a&b</Result> <!-- UNKNOWN PARAMETER TYPE " +
                     std::to_string(BQGetTypeID(value.get())) + " -->\r\n";
  EXPECT_NE(replyWith(value, kVXSOAP2001Protocol).find(line), std::string::npos);
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

}  // namespace
