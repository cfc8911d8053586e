#include "xmlrpc/ValueWriter.h"

#include <gtest/gtest.h>

#include <VX/VXConstants.h>

#include <cmath>
#include <limits>
#include <string>

#include "support/Values.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"

namespace {

using namespace support;

/* An override: the value's description in angle brackets, not escaped. */
const BQString* bracket(VXMethodInvocationRef, BQTypeRef value, void*) {
  return BQStringCreateWithFormat(BQSTR("<<%@>&>"), value);
}

/* The lines of a value behind the declaration; the values of a class written by the override. */
std::string written(const Value& value, int level, BQTypeID overridden = 0) {
  vx::XMLRPCProtocolHandler handler;
  if (overridden != 0) handler.addSerializationOverride(overridden, bracket, nullptr);
  vx::XMLBuffer buffer(kBQStringEncodingUTF8);
  handler.serialize(&buffer, level, value);
  std::string document = bytes(Value::adopt(buffer.copyData()));
  return document.substr(document.find("\r\n") + 2);
}

/* The one line between those of the value element. */
std::string content(const Value& value) {
  std::string lines = written(value, 0);
  EXPECT_EQ(lines.substr(0, 11), "<value>\r\n  ");
  size_t end = lines.rfind("\r\n</value>\r\n");
  return end == std::string::npos ? lines : lines.substr(11, end - 11);
}

TEST(ValueWriter, WritesEachKindOnALine) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::pair<Value, const char*> rows[] = {
      {Value::retain(kBQBooleanTrue), "<boolean>1</boolean>"},
      {Value::retain(kBQBooleanFalse), "<boolean>0</boolean>"},
      {integer(0), "<i4>0</i4>"},
      {integer(INT32_MIN), "<i4>-2147483648</i4>"},
      {integer(INT32_MAX, kBQNumberSInt64Type), "<i4>2147483647</i4>"},
      {integer(int64_t{1} << 31, kBQNumberSInt64Type), "<i4>0</i4>"},
      {integer(-5, kBQNumberSInt8Type), "<i4>-5</i4>"},
      {real(0.1), "<double>0.1</double>"},
      {real(2.5), "<double>2.5</double>"},
      {real(-3), "<double>-3</double>"},
      {real(1234567), "<double>1.23457e+06</double>"},
      {real(1e20), "<double>1e+20</double>"},
      {real(1e-7), "<double>1e-07</double>"},
      {real(kInfinity), "<double>inf</double>"},
      {string(""), "<string></string>"},
      {string("a<b> & 'c' \"d\" \u00e9"),
       "<string>a&lt;b&gt; &amp; &apos;c&apos; &quot;d&quot; \u00e9</string>"},
      {date(BQGregorianDateGetAbsoluteTime({2005, 2, 28, 13, 45, 9.9})),
       "<dateTime.iso8601>20050228T13:45:09Z</dateTime.iso8601>"},
  };
  for (const auto& [value, line] : rows) EXPECT_EQ(content(value), line);
}

TEST(ValueWriter, WritesContainersLevelByLevel) {
  Value nested = dictionary({{"x", string("a&b")}, {"<n>", array({integer(1), Value(), array({})})}});
  EXPECT_EQ(written(nested, 1), withCRLF(R"(  <value>
    <struct>
      <member>
        <name>x</name>
          <value>
            <string>a&amp;b</string>
          </value>
      </member>
      <member>
        <name><n></name>
          <value>
            <array>
              <data>
                <value>
                  <i4>1</i4>
                </value>
                <value>
      <i4>0</i4> <!-- parameter has no (nil) value -->
                </value>
                <value>
                  <array>
                    <data>
                    </data>
                  </array>
                </value>
              </data>
            </array>
          </value>
      </member>
    </struct>
  </value>
)"));
}

TEST(ValueWriter, StructMembersFollowTheirOrderEntry) {
  auto namesOf = [](const Value& value) {
    std::string lines = written(value, 0), names;
    for (size_t start = 0; (start = lines.find("<name>", start)) != std::string::npos;) {
      start += 6;
      names += lines.substr(start, lines.find("</name>", start) - start) + " ";
    }
    return names;
  };
  auto ordered = [](Value order) {
    return dictionary({{"b", integer(1)},
                       {"a", integer(2)},
                       {"/hidden", integer(3)},
                       {"", integer(4)},
                       {"/VXRecordParamOrder", order}});
  };
  EXPECT_EQ(
      namesOf(ordered(array({string("a"), string("missing"), string("/hidden"), string("a"), Value()}))),
      "a missing a ");
  EXPECT_EQ(namesOf(ordered(array({}))), "");
  EXPECT_EQ(namesOf(ordered(string("no array"))), "b a ") << "an order that is no array counts as none";
  EXPECT_EQ(namesOf(ordered(array({integer(5), string("b")}))), "5 b ")
      << "a name that is no string is described";
}

TEST(ValueWriter, DataIsWrittenOnLinesOfItsOwn) {
  std::string line =
      "\t\t\tTU1NTU1NTU1NTU1NTU1NTU1NTU1NTU1NTU1NTU1NTU1NTU1NTU1N\n"
      "\t\t\tTU1NTU1NTU1NTU1NTU1NTU1N\r\n";
  EXPECT_EQ(written(blob(std::string(57, 'M')), 3),
            "      <value>\r\n        <base64>\r\n" + line + "        </base64>\r\n      </value>\r\n");
  EXPECT_EQ(written(blob(""), 0), "<value>\r\n  <base64>\r\n\r\n  </base64>\r\n</value>\r\n");
  EXPECT_EQ(written(blob("Man"), 50), std::string(30, ' ') + "<value>\r\n" + std::string(30, ' ') +
                                          "<base64>\r\n\t\t\t\tTWFu\r\n" + std::string(30, ' ') +
                                          "</base64>\r\n" + std::string(30, ' ') + "</value>\r\n");
}

TEST(ValueWriter, WhatHasNoFormIsDescribed) {
  auto lines = [](const Value& value, const std::string& description) {
    return withCRLF("  <!-- Unknown BQType (" + std::to_string(BQGetTypeID(value)) +
                    ") for parameter - trying string coercion -->\n  <string>" + description + "</string>\n");
  };
  for (const Value& value : {Value::retain(kBQNull), url("http://h/?a&b")}) {
    EXPECT_EQ(written(value, 0), "<value>\r\n" + lines(value, text(value.get())) + "</value>\r\n");
  }
}

TEST(ValueWriter, OverridesReplaceTheContentOfTheirClass) {
  Value value = array({string("s"), dictionary({{"k", string("t")}}), integer(1)});
  EXPECT_EQ(written(value, 0, BQStringGetTypeID()), withCRLF(R"(<value>
  <array>
    <data>
      <value>
        <<s>&>
      </value>
      <value>
        <struct>
          <member>
            <name>k</name>
              <value>
                <<t>&>
              </value>
          </member>
        </struct>
      </value>
      <value>
        <i4>1</i4>
      </value>
    </data>
  </array>
</value>
)"));
  EXPECT_EQ(written(value, 0, BQArrayGetTypeID()),
            "<value>\r\n  <<[\"s\", {\"k\": \"t\"}, 1]>&>\r\n</value>\r\n");
}

}  // namespace
