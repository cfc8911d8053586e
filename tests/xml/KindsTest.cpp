#include "xml/Kinds.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "support/Values.h"
#include "xml/SOAPNamespaces.h"

namespace {

using namespace support;

TEST(Kinds, FollowTheClassOfAValue) {
  const std::pair<Value, VXTypeID> rows[] = {{Value::retain(kBQNull), kVXTypeNull},
                                             {Value::retain(kBQBooleanTrue), kVXTypeBoolean},
                                             {integer(5), kVXTypeInteger},
                                             {integer(5, kBQNumberSInt64Type), kVXTypeInteger},
                                             {integer(5, kBQNumberFloatType), kVXTypeDouble},
                                             {real(5), kVXTypeDouble},
                                             {string(""), kVXTypeString},
                                             {date(0), kVXTypeDate},
                                             {blob(""), kVXTypeData},
                                             {array({}), kVXTypeArray},
                                             {dictionary({}), kVXTypeDictionary},
                                             {url("http://localhost/"), kVXTypeUnknown},
                                             {tree("<a/>"), kVXTypeUnknown},
                                             {Value(), kVXTypeUnknown}};
  for (const auto& [value, kind] : rows) {
    EXPECT_EQ(VXGetVXTypeIDFromBQType(value), kind) << notation(value.get());
    BQTypeID typeID = kind == kVXTypeUnknown ? 0 : BQGetTypeID(value);
    EXPECT_EQ(VXGetBQTypeIDFromVXTypeID(kind), typeID) << notation(value.get());
  }
  EXPECT_EQ(VXGetBQTypeIDFromVXTypeID(static_cast<VXTypeID>(10)), 0u);
}

TEST(Kinds, SchemaNamesStandForThem) {
  const std::pair<VXTypeID, const char*> rows[] = {
      {kVXTypeNull, "nil null NULL"},          {kVXTypeBoolean, "boolean bool"},
      {kVXTypeInteger, "i4 int long short"},   {kVXTypeString, "string"},
      {kVXTypeDate, "timeInstant dateTime"},   {kVXTypeData, "base64 base64Binary"},
      {kVXTypeDouble, "double decimal float"}, {kVXTypeArray, "Array"},
      {kVXTypeDictionary, "Dictionary"},       {kVXTypeUnknown, "Int array dictionary integer Null"}};
  const BQString* known[] = {vx::VX_SOAP_1999_SCHEMA_NAMESPACE, vx::VX_SOAP_2001_SCHEMA_NAMESPACE,
                             vx::VX_SOAP_1999_ENCODING_NAMESPACE, vx::VX_SOAP_2001_ENCODING_NAMESPACE};
  for (auto [kind, names] : rows) {
    std::istringstream words(names);
    for (std::string name; words >> name;) {
      for (const BQString* uri : known) EXPECT_EQ(vx::VXQualifiedtoVXType(uri, string(name)), kind) << name;
      for (const BQString* uri : {static_cast<const BQString*>(nullptr), BQSTR("urn:other")}) {
        EXPECT_EQ(vx::VXQualifiedtoVXType(uri, string("any:" + name)), kind) << name;
        EXPECT_EQ(vx::VXQualifiedtoVXType(uri, string(name)), kVXTypeUnknown) << name;
      }
    }
  }
}

TEST(Kinds, IntegersAreReadFromTheStartOfAText) {
  const std::pair<std::string, const char*> rows[] = {
      {"42", "42"},
      {" -7", "-7"},
      {"\t\n +8", "8"},
      {"0x1F", "31"},
      {"-0B101", "0"},
      {"-0X1f", "-31"},
      {"010", "8"},
      {"08", "0"},
      {"12abc", "12"},
      {"abc", "0"},
      {"", "0"},
      {"-", "0"},
      {"2147483647", "2147483647"},
      {"2147483648", "2147483648L"},
      {"-2147483648", "-2147483648"},
      {"-2147483649", "-2147483649L"},
      {"999999999999999999", "999999999999999999L"},
      {"99999999999999999999", "9223372036854775807L"},
      {"-99999999999999999999", "-9223372036854775808L"},
      {"\u65e5"
       "5",
       "5"},
      {"5\u65e5"
       "5",
       "5"}, /* a character beyond ASCII is one blank */
      {std::string(127, ' ') + "42", "4"},
      {std::string(128, ' ') + "42", "0"}}; /* 128 characters count */
  for (const auto& [digits, number] : rows) {
    EXPECT_EQ(notation(Value::adopt(vx::makeIntValueFromString(string(digits))).get()), number) << digits;
  }
}

}  // namespace
