#include <gtest/gtest.h>

#include <VX/VXConstants.h>

#include <cstring>
#include <limits>
#include <string>

#include "soap/SOAPProtocolHandler.h"
#include "support/Values.h"

namespace {

using namespace support;

struct Override {
  BQTypeID typeID;
  const char* text; /* null: the override declines */
};

const BQString* overrideText(VXMethodInvocationRef, BQTypeRef, void* info) {
  const char* text = static_cast<const Override*>(info)->text;
  return text == nullptr ? nullptr : BQStringCreateWithUTF8(text, static_cast<BQIndex>(strlen(text)));
}

/* The lines of a value behind the declaration; "(null)" if there is no document. */
std::string written(const Value& value, int level = 0, const BQString* protocol = kVXSOAP2001Protocol,
                    const BQString* name = BQSTR("n"), const Override* replacement = nullptr) {
  vx::SOAPProtocolHandler handler(protocol);
  if (replacement != nullptr) {
    VXClientContext context = {0, const_cast<Override*>(replacement), nullptr, nullptr, nullptr};
    handler.addSerializationOverride(replacement->typeID, overrideText, &context);
  }
  vx::XMLBuffer buffer(kBQStringEncodingUTF8);
  handler.serialize(&buffer, level, name, value);
  std::string document = bytes(Value::adopt(buffer.copyData()));
  return document.substr(document.find('\n') + 1);
}

TEST(SOAPValueWriter, WritesEachKindOnALine) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::pair<Value, const char*> rows[] = {
      {Value(), "<n xsi:type=\"nil\"/>"},
      {Value::retain(kBQNull), "<n xsi:type=\"nil\"/>"},
      {Value::retain(kBQBooleanTrue), "<n xsi:type=\"xsd:boolean\">true</n>"},
      {Value::retain(kBQBooleanFalse), "<n xsi:type=\"xsd:boolean\">false</n>"},
      {integer(INT32_MIN), "<n xsi:type=\"xsd:int\">-2147483648</n>"},
      {integer(INT32_MAX, kBQNumberSInt64Type), "<n xsi:type=\"xsd:int\">2147483647</n>"},
      {integer(int64_t{1} << 31, kBQNumberSInt64Type), "<n xsi:type=\"xsd:int\">0</n>"},
      {real(0.1), "<n xsi:type=\"xsd:double\">0.1</n>"},
      {real(-3), "<n xsi:type=\"xsd:double\">-3</n>"},
      {real(1.0 / 3), "<n xsi:type=\"xsd:double\">0.33333333</n>"},
      {real(123456789), "<n xsi:type=\"xsd:double\">1.2345679e+08</n>"},
      {real(-kInfinity), "<n xsi:type=\"xsd:double\">-inf</n>"},
      {string(""), "<n xsi:type=\"xsd:string\"></n>"},
      {string("a<b> & 'c' \"d\" %@"),
       "<n xsi:type=\"xsd:string\">a&lt;b&gt; &amp; &apos;c&apos; &quot;d&quot; %@</n>"},
      {date(BQGregorianDateGetAbsoluteTime({2005, 2, 28, 13, 45, 9})),
       "<n xsi:type=\"xsd:dateTime\">2005-02-28T13:45:09Z</n>"},
      {dictionary({}), "<n xsi:type=\"SOAP-ENC:Dictionary\">\r\n</n>"},
      {array({}), "<n SOAP-ENC:arrayType=\"xsd:anyType[0]\" xsi:type=\"SOAP-ENC:Array\">\r\n</n>"},
  };
  for (const auto& [value, line] : rows) EXPECT_EQ(written(value), line + std::string("\r\n"));
}

TEST(SOAPValueWriter, NamesTypesAsTheGenerationDoes) {
  const std::pair<Value, const char*> rows[] = {
      {date(0), "<n xsi:type=\"xsd:timeInstant\">2001-01-01T00:00:00Z</n>\r\n"},
      {array({integer(1)}),
       "<n SOAP-ENC:arrayType=\"xsd:ur-type[1]\" xsi:type=\"SOAP-ENC:Array\">\r\n"
       "  <item_0 xsi:type=\"xsd:int\">1</item_0>\r\n</n>\r\n"},
      {blob("Man"), "<n xsi:type=\"xsd:base64\">TWFu</n>\r\n"},
  };
  for (const auto& [value, lines] : rows) EXPECT_EQ(written(value, 0, kVXSOAP1999Protocol), lines);
  vx::SOAPProtocolHandler old(kVXSOAP1999Protocol), current(kVXSOAP2001Protocol), none(nullptr);
  EXPECT_EQ(text(old.heterogeneousArrayTypeName()), "ur-type");
  EXPECT_EQ(text(old.dateTimeEncoding()), "timeInstant");
  EXPECT_EQ(text(current.heterogeneousArrayTypeName()), "anyType");
  EXPECT_EQ(text(current.dateTimeEncoding()), "dateTime");
  EXPECT_EQ(none.dateTimeEncoding(), nullptr);
}

TEST(SOAPValueWriter, WritesContainersLevelByLevel) {
  Value record =
      dictionary({{"b", integer(1)},
                  {"/hidden", integer(3)},
                  {"", integer(4)},
                  {"a", array({string("x"), Value(), dictionary({{"k", Value::retain(kBQNull)}})})},
                  {"/VXRecordType", string("t:Point")},
                  {"/VXRecordNamespaceURI", string("urn:points")}});
  EXPECT_EQ(written(record, 1), withCRLF(R"(  <n xsi:type="t:Point" xmlns="urn:points">
    <b xsi:type="xsd:int">1</b>
    <a SOAP-ENC:arrayType="xsd:anyType[3]" xsi:type="SOAP-ENC:Array">
      <item_0 xsi:type="xsd:string">x</item_0>
      <!-- Missing value at index 1 -->)") +
                                    "\n\r\n" + withCRLF(R"(      <item_2 xsi:type="SOAP-ENC:Dictionary">
        <k xsi:type="nil"/>
      </item_2>
    </a>
  </n>
)"));
  BQDictionarySetValue(
      record.as<BQDictionary>(), kVXRecordParameterOrder,
      array({string("missing"), string("b"), string("/hidden"), string(""), Value(), string("b")}));
  EXPECT_EQ(written(record), withCRLF(R"(<n xsi:type="t:Point" xmlns="urn:points">
  <missing xsi:type="nil"/>
  <b xsi:type="xsd:int">1</b>
  <b xsi:type="xsd:int">1</b>
</n>
)"));
}

TEST(SOAPValueWriter, DataIsIndentedByItsLevel) {
  auto lines = [](const std::string& first, const std::string& second) {
    return "<n xsi:type=\"xsd:base64Binary\">" + first + "\n" + second + "</n>\r\n";
  };
  EXPECT_EQ(written(blob(std::string(51, '\0')), 3),
            "      " + lines("\t" + std::string(64, 'A'), "\t" + std::string(4, 'A')));
  EXPECT_EQ(written(blob(std::string(60, '\0'))), lines(std::string(76, 'A'), std::string(4, 'A')));
}

TEST(SOAPValueWriter, WhatHasNoFormIsDescribedWithAComment) {
  Value value = url("http://h/?a");
  EXPECT_EQ(written(value), "<n>" + text(value.get()) + "</n> <!-- UNKNOWN PARAMETER TYPE " +
                                std::to_string(BQGetTypeID(value.get())) + " -->\r\n");
}

TEST(SOAPValueWriter, OverridesReplaceTheElement) {
  const Value value = array({string("s"), Value::retain(kBQNull), dictionary({{"k", string("t")}})});
  const std::string open = "<n SOAP-ENC:arrayType=\"xsd:anyType[3]\" xsi:type=\"SOAP-ENC:Array\">\r\n";
  const std::string dictionaryLines = "  <item_2 xsi:type=\"SOAP-ENC:Dictionary\">\r\n";
  const std::string nil = "  <item_1 xsi:type=\"nil\"/>\r\n", close = "  </item_2>\r\n</n>\r\n";
  const struct {
    Override replacement;
    std::string lines;
  } rows[] = {
      {{BQStringGetTypeID(), "<%@>&</%@>"},
       open + "  <item_0>&</item_0>\r\n" + nil + dictionaryLines + "    <k>&</k>\r\n" + close},
      {{BQStringGetTypeID(), ""}, open + "  \r\n" + nil + dictionaryLines + "    \r\n" + close},
      {{BQNullGetTypeID(), "<%@ none='1'/>"},
       open + "  <item_0 xsi:type=\"xsd:string\">s</item_0>\r\n  <item_1 none='1'/>\r\n" + dictionaryLines +
           "    <k xsi:type=\"xsd:string\">t</k>\r\n" + close},
      {{BQArrayGetTypeID(), nullptr}, written(value)},
      {{BQArrayGetTypeID(), "all"}, "all\r\n"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(written(value, 0, kVXSOAP2001Protocol, BQSTR("n"), &row.replacement), row.lines);
  }
  const Override twice = {BQStringGetTypeID(), "<%@>%@</%@>"};
  EXPECT_EQ(written(string("s"), 0, kVXSOAP2001Protocol, BQSTR("x%@y"), &twice), "<x%@y>x%@y</x%@y>\r\n")
      << "the names put in are not searched again";
  EXPECT_EQ(written(Value(), 0, kVXSOAP2001Protocol, BQSTR("n"), &twice), "<n xsi:type=\"nil\"/>\r\n")
      << "none is asked about no value";
}

}  // namespace
