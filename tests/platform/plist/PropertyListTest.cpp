#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/PlatformValues.h"

namespace {

using namespace std::string_literals;
using namespace values;

const std::string kStart = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n",
                  kEnd = "\n</plist>\n";

/* The element; "(none)" if there is no document. */
std::string write(const Value& value) {
  std::string document = bytes(own(BQPropertyListCreateXMLData(value.get())).get());
  if (document == "(none)") return document;
  EXPECT_TRUE(document.starts_with(kStart) && document.ends_with(kEnd)) << document;
  return document.substr(kStart.size(), document.size() - kStart.size() - kEnd.size());
}

Value read(std::string_view document, std::string* message = nullptr) {
  const BQString* error = nullptr;
  auto data = own(BQDataCreateView(document.data(), std::ssize(document)));
  Value value = own(BQPropertyListCreateFromXMLData(data.get(), &error));
  auto kept = own(error);
  EXPECT_NE(static_cast<bool>(value), static_cast<bool>(kept)) << document;
  if (message != nullptr) *message = text(kept);
  return value;
}

/* How an element is written after it was read; "-" if it is refused. */
std::string rewritten(const std::string& element) {
  std::string message;
  Value value = read(
      "<!DOCTYPE plist PUBLIC '-//X//DTD' 'http://x.invalid/p.dtd'><plist>" + element + "</plist>", &message);
  if (!value) return message.empty() ? "refused without a message" : "-";
  std::string result = write(value);
  EXPECT_TRUE(BQEqual(read(kStart + result + kEnd).get(), value.get())) << result;
  return result;
}

TEST(PropertyList, HoldsEveryKindOfValue) {
  const std::string element =
      "<dict>\n  <key>a &amp; b</key>\n  <array>\n    <integer>-1</integer>\n    <real>0.5</real>\n    "
      "<dict/>\n"
      "    <array>\n      <string>&lt;x&gt;</string>\n    </array>\n    <array/>\n  </array>\n  "
      "<key>none</key>\n"
      "  <string></string>\n  <key>yes</key>\n  <true/>\n  <key>no</key>\n  <false/>\n  <key>date</key>\n"
      "  <date>2001-01-01T00:00:00Z</date>\n  <key>data</key>\n  <data>/wAQgA==</data>\n</dict>";
  EXPECT_EQ(rewritten(element), element);
  EXPECT_EQ(describe(read("<plist>" + element + "</plist>").get()),
            R"({"a & b": [-1, 0.5, {}, ["<x>"], []], "none": "", "yes": true, "no": false, )"
            R"("date": 2001-01-01T00:00:00Z, "data": <4 bytes ff001080>})");
  EXPECT_EQ(write(own(BQDateCreate(-978307199.75))), "<date>1970-01-01T00:00:00.25Z</date>");
  /* A fraction that rounds up to a second must not be lost. */
  EXPECT_EQ(write(own(BQDateCreate(-1e-300))), "<date>2001-01-01T00:00:00Z</date>");
}

TEST(PropertyList, ReadsWhatItWritesAndRefusesNonsense) {
  struct Row {
    std::string name;
    std::vector<const char*> kept, refused;
  };
  const Row rows[] = {
      {"integer",
       {"0", "-1", "9223372036854775807", "-9223372036854775808"},
       {"", "x", "&e;", "1 2", "1.5", "0x10", "+-1", "++1", "9223372036854775808", "-9223372036854775809"}},
      {"real",
       {"-0", "1", "0.1", "-1e+300", "1.7976931348623157e+308", "5e-324", "0.3333333333333333", "inf", "-inf",
        "nan"},
       {"", "x", "1,5", "1e999", "1.5x"}},
      {"date",
       {"2001-01-01T00:00:00.5Z", "0000-01-01T00:00:00Z", "-0001-12-31T23:59:59Z", "9999-12-31T23:59:59Z",
        "+10000-01-01T00:00:00Z", "-1900000000-01-01T00:00:00Z", "+100000000-12-31T23:59:59Z"},
       {"", "2001-01-01", "20010101T00:00:00Z", "2001-01-01T00:00:00", "2001-01-01T00:00:00ZZ",
        "2001-01-01T00:00:00.Z", "01-01-01T00:00:00Z", "2001-02-29T00:00:00Z", "2001-13-01T00:00:00Z",
        "2001-01-01T24:00:00Z", "2001-01-01T00:00:60Z", "+-01-01T00:00:00Z", "+2147483648-01-01T00:00:00Z"}},
      {"data",
       {"", "AA==", "AAA=", "AAAA", "+/+/AP8="},
       {"A", "A===", "AAA", "AA=", "AA===", "=AAA", "AA==AA==", "AA-_", "===="}},
      {"string",
       {"", "\t &#13;\n", "a&#13;\nb", "&lt;&amp;&gt;\"']]&gt;", "&amp;amp;", "\xC3\xA9\xF0\x9F\x98\x80\x7F",
        "\xEF\xBB\xBF\xEF\xBF\xBD"},
       {"<true/>", "&e;"}},
      {"array", {}, {"x", "<true/>&e;", "<![CDATA[]]>"}},
      {"dict",
       {},
       {"x", "<key>k</key>", "<true/>", "<key>k</key><key>l</key>", "<key>k</key>x", "<key>k</key><true/>x",
        "<key><true/></key><true/>", "<string>k</string><true/>"}},
      {"true", {}, {"x", "<true/>"}},
      {"false", {}, {"x", "<true/>"}},
      {"plist", {}, {"<true/>"}},
      {"key", {}, {"k"}},
  };
  for (const auto& [name, kept, refused] : rows) {
    auto element = [&name = name](const std::string& content) {
      return "<" + name + ">" + content + "</" + name + ">";
    };
    for (const char* content : kept) EXPECT_EQ(rewritten(element(content)), element(content));
    for (const char* content : refused) EXPECT_EQ(rewritten(element(content)), "-") << name << content;
  }
  for (const char* several : {"", " ", "x", "<true/><true/>"}) EXPECT_EQ(rewritten(several), "-");
  for (const char* document : {"", "x", "<dict/>", "<plists><true/></plists>"})
    EXPECT_FALSE(read(document)) << document;
  std::string message;
  read("<plist>\n<true></plist>", &message);
  EXPECT_EQ(message, "mismatched tag (line 2)");
}

TEST(PropertyList, ReadsWhatOthersWrite) {
  const std::pair<const char*, const char*> rows[] = {
      {"<integer> +5\n</integer>", "<integer>5</integer>"},
      {"<real>\t+1.5e3 </real>", "<real>1500</real>"},
      {"<real>Infinity</real>", "<real>inf</real>"},
      {"<date> 2001-01-01T00:00:01.250Z\n</date>", "<date>2001-01-01T00:00:01.25Z</date>"},
      {"<data>\n\tYW\r Jj </data>", "<data>YWJj</data>"},
      {"<string a='b'>a<![CDATA[<b>]]>c&amp;<!-- no -->d</string>", "<string>a&lt;b&gt;c&amp;d</string>"},
      {"<string> <![CDATA[]]>\n</string>", "<string> \n</string>"},
      {"<dict> </dict>", "<dict/>"},
      {"<array> <true>\n</true> <!-- --> <string/>\n</array>",
       "<array>\n  <true/>\n  <string></string>\n</array>"},
      {"<dict><key>z</key><true/><key>z</key><dict/></dict>", "<dict>\n  <key>z</key>\n  <dict/>\n</dict>"},
  };
  for (const auto& [element, expected] : rows) EXPECT_EQ(rewritten(element), expected) << element;
}

TEST(PropertyList, RefusesToWriteWhatItCannotHold) {
  const Value number = integer(1), forbidden = string("x\x1F");
  const Value values[] = {Value(),
                          array({kBQNull}),
                          array({nullptr}),
                          dictionary({{number.get(), BQSTR("x")}}),
                          dictionary({{BQSTR("k"), forbidden.get()}}),
                          dictionary({{forbidden.get(), BQSTR("x")}}),
                          string("a\0b"s),
                          string("\xEF\xBF\xBE"),
                          string("x\xEF\xBF\xBF"),
                          own(BQDateCreate(NAN)),
                          own(BQDateCreate(INFINITY)),
                          own(BQDateCreate(-1e17))};
  for (const Value& value : values) EXPECT_EQ(write(value), "(none)") << describe(value.get());
}

}  // namespace
