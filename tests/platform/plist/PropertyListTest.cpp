#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "support/PlatformValues.h"

namespace {

using namespace std::string_literals;
using namespace values;

Value date(double time) {
  return own(BQDateCreate(time));
}

Value blob(std::string_view bytes) {
  return own(BQDataCreate(bytes.data(), static_cast<BQIndex>(bytes.size())));
}

Value list(const std::vector<Value>& values) {
  auto result = array({});
  for (const Value& value : values) BQArrayAppendValue(result.get(), value.get());
  return result;
}

Value dictionary(const std::vector<std::pair<Value, Value>>& pairs) {
  auto result = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
  for (const auto& [key, value] : pairs) BQDictionarySetValue(result.get(), key.get(), value.get());
  return result;
}

const Value kYes = Value::retain(kBQBooleanTrue), kNo = Value::retain(kBQBooleanFalse);

/* The document, or "null". */
std::string write(const Value& value) {
  auto document = own(BQPropertyListCreateXMLData(value.get()));
  if (!document) return "null";
  return {reinterpret_cast<const char*>(BQDataGetBytePtr(document.get())),
          static_cast<size_t>(BQDataGetLength(document.get()))};
}

Value read(std::string_view document, std::string* message = nullptr) {
  const BQString* error = nullptr;
  auto bytes = own(BQDataCreateView(document.data(), static_cast<BQIndex>(document.size())));
  Value value = own(BQPropertyListCreateFromXMLData(bytes.get(), &error));
  EXPECT_NE(static_cast<bool>(value), error != nullptr) << document;
  auto kept = own(error);
  if (message != nullptr) *message = text(kept);
  return value;
}

std::string wrapped(std::string_view value) {
  return "<plist version='1.0'>" + std::string(value) + "</plist>";
}

void expectRoundTrips(const std::vector<Value>& values) {
  for (const Value& value : values) {
    std::string document = write(value);
    Value copy = read(document);
    EXPECT_TRUE(BQEqual(copy.get(), value.get())) << document;
    EXPECT_EQ(BQGetTypeID(copy.get()), BQGetTypeID(value.get()));
  }
}

Value nested(int levels) {
  Value value = list({});
  for (int i = 1; i < levels; ++i) value = i % 2 ? list({value}) : dictionary({{string("k"), value}});
  return value;
}

TEST(PropertyList, WritesADocument) {
  Value value = dictionary({
      {string("a & b"), list({integer(-1), real(0.5), string("<x>"), list({}), dictionary({})})},
      {string("none"), string("")},
      {string("yes"), kYes},
      {string("date"), date(0)},
      {string("data"), blob("\xFF\x00\x10\x80"s)},
  });
  EXPECT_EQ(write(value),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<plist version=\"1.0\">\n"
            "<dict>\n"
            "  <key>a &amp; b</key>\n"
            "  <array>\n"
            "    <integer>-1</integer>\n"
            "    <real>0.5</real>\n"
            "    <string>&lt;x&gt;</string>\n"
            "    <array/>\n"
            "    <dict/>\n"
            "  </array>\n"
            "  <key>none</key>\n"
            "  <string></string>\n"
            "  <key>yes</key>\n"
            "  <true/>\n"
            "  <key>date</key>\n"
            "  <date>2001-01-01T00:00:00Z</date>\n"
            "  <key>data</key>\n"
            "  <data>/wAQgA==</data>\n"
            "</dict>\n"
            "</plist>\n");
  EXPECT_TRUE(BQEqual(read(write(value)).get(), value.get()));
}

TEST(PropertyList, StringsRoundTrip) {
  for (const char* each : {"", "\n", "\t \r\n", " x ", "\nx\n", "a\r\nb\rc\n", "<&>\"']]>", "&amp;", "&#13;",
                           "<![CDATA[", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC2\xA0", "\x7F",
                           "\xEF\xBB\xBF", "\xEF\xBF\xBD", "\xC2\x85\xE2\x80\xA8"}) {
    expectRoundTrips({string(each), dictionary({{string(each), string(each)}})});
  }
}

TEST(PropertyList, NumbersRoundTrip) {
  std::vector<Value> numbers;
  for (int64_t each : {int64_t{0}, int64_t{-1}, INT64_MAX, INT64_MIN}) numbers.push_back(integer(each));
  using limits = std::numeric_limits<double>;
  for (double each : {0.0, 1.0, 0.1, -1e300, 1e-300, limits::max(), limits::min(), limits::denorm_min(),
                      1 / 3.0, 9007199254740993.0, limits::infinity(), -limits::infinity(),
                      limits::quiet_NaN(), std::copysign(limits::quiet_NaN(), -1.0)}) {
    numbers.push_back(real(each));
  }
  float single = 0.1f;
  int8_t small = -7;
  numbers.push_back(own(BQNumberCreate(kBQNumberFloat32Type, &single)));
  numbers.push_back(own(BQNumberCreate(kBQNumberSInt8Type, &small)));
  expectRoundTrips(numbers);
  double zero = 1;
  BQNumberGetValue(static_cast<const BQNumber*>(read(write(real(-0.0))).get()), kBQNumberFloat64Type, &zero);
  EXPECT_TRUE(std::signbit(zero));
  EXPECT_TRUE(BQNumberIsFloatType(static_cast<const BQNumber*>(read(write(real(1))).get())));
}

TEST(PropertyList, DatesRoundTrip) {
  for (double each : {0.0, 0.1, -0.5, 1e-300, 5e-324, 735000000.123456, -978307200.75,
                      -62135596800.0 - 978307200, 6e16, -6e16, 253402300799.5, 9e9 + 1 / 3.0}) {
    expectRoundTrips({date(each)});
  }
  EXPECT_NE(write(date(-978307199.75)).find("<date>1970-01-01T00:00:00.25Z</date>"), std::string::npos);
  /* A fraction that rounds up to a second must not be lost. */
  EXPECT_EQ(describe(read(write(date(-1e-300))).get()), describe(date(0).get()));
}

TEST(PropertyList, ContainersBooleansAndDataRoundTrip) {
  expectRoundTrips({list({}), dictionary({}), kYes, kNo, nested(511),
                    list({list({list({})}), dictionary({{string("k"), dictionary({})}})})});
  std::string bytes;
  for (int i = 0; i < 257; ++i) {
    expectRoundTrips({blob(bytes)});
    bytes += static_cast<char>(i * 37);
  }
  Value order = read(wrapped("<dict><key>z</key><true/><key>a</key><true/><key>m</key><true/></dict>"));
  EXPECT_EQ(describe(order.get()), R"({"z": true, "a": true, "m": true})");
}

TEST(PropertyList, RefusesToWriteWhatItCannotHold) {
  auto cyclic = array({nullptr, nullptr});
  for (BQIndex i : {0, 1}) BQArraySetValueAtIndex(cyclic.get(), i, cyclic.get());
  const Value values[] = {
      Value(),
      Value::retain(kBQNull),
      list({Value::retain(kBQNull)}),
      list({Value()}),
      dictionary({{integer(1), string("x")}}),
      dictionary({{string("k"), list({string("\x01")})}}),
      dictionary({{string("\x1F"), string("x")}}),
      string("a\0b"s),
      string("\xEF\xBF\xBE"),
      string("x\xEF\xBF\xBF"),
      date(NAN),
      date(INFINITY),
      date(-1e17),
      nested(512),
      cyclic,
  };
  for (const Value& value : values) EXPECT_EQ(write(value), "null");
  BQArrayRemoveAllValues(cyclic.get());
}

TEST(PropertyList, ReadsWhatOthersWrite) {
  struct Row {
    const char* value;
    Value expected;
  };
  const Row rows[] = {
      {"<integer> +5\n</integer>", integer(5)},
      {"<integer>9223372036854775807</integer>", integer(INT64_MAX)},
      {"<real>+1.5e3</real>", real(1500)},
      {"<real>Infinity</real>", real(INFINITY)},
      {"<date> 2001-01-01T00:00:01.250Z </date>", date(1.25)},
      {"<date>-0001-12-31T23:59:59Z</date>", date(-63145526401.0)},
      {"<data>\n\tYW\n Jj </data>", blob("abc")},
      {"<string>a<![CDATA[<b>]]>c&amp;<!-- no -->d</string>", string("a<b>c&d")},
      {"<string/>", string("")},
      {"<string> <![CDATA[]]>\n</string>", string(" \n")},
      {"<dict> </dict>", dictionary({})},
      {"<array>\n<true>\n</true>\n</array>", list({kYes})},
      {"<string attribute='ignored'>x</string>", string("x")},
      {"<array> <true/> <!-- --> <false></false> </array>", list({kYes, kNo})},
      {"<dict><key>k</key><integer>1</integer><key>k</key><integer>2</integer></dict>",
       dictionary({{string("k"), integer(2)}})},
  };
  for (const Row& row : rows) {
    for (const std::string& prolog :
         {""s, "<!DOCTYPE plist PUBLIC '-//X//DTD' 'http://x.invalid/p.dtd'>\n"s}) {
      Value value = read(prolog + wrapped(row.value));
      EXPECT_TRUE(BQEqual(value.get(), row.expected.get()))
          << row.value << " gives " << describe(value.get());
    }
  }
}

TEST(PropertyList, RefusesToReadNonsense) {
  struct Row {
    const char* element;
    std::vector<const char*> contents;
  };
  const Row rows[] = {
      {"plist", {"", " ", "x", "&e;", "<true/><true/>", "<x/>", "<Dict/>", "<key>k</key>", "<plist/>"}},
      {"true", {"x", "<true/>"}},
      {"false", {"x", "<true/>"}},
      {"string", {"<true/>", "&e;"}},
      {"integer",
       {"", "x", "&e;", "1 2", "1.5", "0x10", "+-1", "++1", "9223372036854775808", "-9223372036854775809"}},
      {"real", {"", "x", "1,5", "1e999", "1.5x", "1 2"}},
      {"date",
       {"", "2001-01-01", "20010101T00:00:00Z", "2001-01-01T00:00:00", "2001-01-01T00:00:00ZZ",
        "2001-01-01T00:00:00.Z", "01-01-01T00:00:00Z", "2001-02-29T00:00:00Z", "2001-13-01T00:00:00Z",
        "2001-00-01T00:00:00Z", "2001-01-01T24:00:00Z", "2001-01-01T00:00:60Z", "+-01-01T00:00:00Z",
        "+99999999999-01-01T00:00:00Z", "+2147483648-01-01T00:00:00Z"}},
      {"data", {"A", "A===", "AAA", "AA=", "AA===", "=AAA", "AA==AA==", "AA-_", "===="}},
      {"array", {"x", "<true/>&e;", "<![CDATA[]]>"}},
      {"dict",
       {"x", "<key>k</key>", "<true/>", "<key>k</key><key>l</key>", "<key>k</key>x", "<key>k</key><true/>x",
        "<key><true/></key><true/>", "<key>k</key><true/><key>l</key>", "<string>k</string><true/>"}},
  };
  for (const Row& row : rows) {
    for (const char* content : row.contents) {
      std::string value = "<"s + row.element + ">" + content + "</" + row.element + ">";
      std::string message;
      EXPECT_FALSE(read(row.element == "plist"s ? value : wrapped(value), &message)) << value;
      EXPECT_FALSE(message.empty());
    }
  }
  for (const char* document :
       {"", "x", "<dict/>", "<plist>", "<plists><true/></plists>", "\xFF\xFE", "bplist00"}) {
    EXPECT_FALSE(read(document)) << document;
  }
  std::string message;
  read("<plist>\n<true></plist>", &message);
  EXPECT_EQ(message, "mismatched tag (line 2)");
}

TEST(PropertyList, AnswersEveryDamagedDocument) {
  std::string document = write(dictionary({
      {string("k"), list({integer(12), real(1.5), date(0.5), blob("bytes"), string(" ")})},
      {string("l"), kYes},
  }));
  ASSERT_TRUE(read(document));
  for (size_t length = 0; length + 1 < document.size(); ++length)
    EXPECT_FALSE(read(document.substr(0, length)));
  for (size_t i = 0; i < document.size(); ++i) {
    for (char c : {'\0', '<', '>', '/', '&', '=', '9', '-', 'x', '\xFF'}) {
      std::string damaged = document;
      damaged[i] = c;
      read(damaged);
    }
  }
}

}  // namespace
