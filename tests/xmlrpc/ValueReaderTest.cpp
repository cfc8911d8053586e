#include "xmlrpc/ValueReader.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"

namespace {

using namespace support;

/* What a value element with that content reads as; or the message. */
std::string read(const std::string& content) {
  Value document = tree("<value>" + content + "</value>");
  const BQString* message = BQSTR("left from before");
  Value value = Value::adopt(vx::parseType(BQTreeGetFirstChild(document), &message));
  EXPECT_TRUE(value.get() == nullptr || message == nullptr) << content;
  return message == nullptr ? notation(value.get()) : text(Value::adopt(message).get());
}

std::string readArray(const std::string& content) {
  return read("<array><data>" + content + "</data></array>");
}

std::string readStruct(const std::string& content) {
  return read("<struct>" + content + "</struct>");
}

TEST(ValueReader, ReadsEachKind) {
  const std::pair<const char*, const char*> rows[] = {
      {"", "-"},
      {" \n ", "-"},
      {"abc", "'abc'"},
      {"a&amp;b<![CDATA[<c>]]>&undeclared;", "'a&b<c><<Unknown Escape>>'"},
      {"text<i4>1</i4>", "'text'"},
      {"<string/>", "-"},
      {"<STRING>a&amp;b</STRING>", "'a&b'"},
      {"<string>x<![CDATA[]]></string>", "'x'"},
      {"<string><i4>1</i4></string>", "-"},
      {"<boolean>TRUE</boolean>", "true"},
      {"<boolean>Y</boolean>", "true"},
      {"<boolean>1</boolean>", "true"},
      {"<boolean>yes</boolean>", "true"},
      {"<boolean>t</boolean>", "true"},
      {"<boolean>0</boolean>", "false"},
      {"<boolean>no</boolean>", "false"},
      {"<boolean> 1</boolean>", "false"},
      {"<boolean>11</boolean>", "false"},
      {"<boolean/>", "false"},
      {"<i4>010</i4>", "8"},
      {"<int>4294967296</int>", "4294967296L"},
      {"<Int> -5 </Int>", "-5"},
      {"<int>\n<![CDATA[5]]></int>", "5"},
      {"<i4/>", "0"},
      {"<i4>1<!-- dropped -->2</i4>", "12"},
      {"<i4>1&undeclared;2</i4>", "1"}, /* the first piece alone */
      {"<i4><b>7</b></i4>", "0"},       /* the text is the element's name */
      {"<double/>", "0d"},
      {"<double> -2.5e1x</double>", "-25d"},
      {"<double>abc</double>", "0d"},
      {"<dateTime.iso8601>20050228T13:45:09</dateTime.iso8601>", "@2005-02-28T13:45:09"},
      {"<DATETIME.ISO8601>2005-02-28T13:45:09Z</DATETIME.ISO8601>", "@2005-02-28T13:45:09"},
      {"<base64>\n  AP8=\n</base64>", "<00ff>"},
      {"<base64/>", "<>"},
      {"<base64>\u00e9</base64>", "-"},
      {"<string>x</string><i4>1</i4>", "'x'"}, /* the first element alone */
      {"<nil/>", "Don't know how to deserialize nil"},
      {"<i8>1</i8>", "Don't know how to deserialize i8"},
      {"<x:int>1</x:int>", "Don't know how to deserialize x:int"},
      {"<dateTime>2005</dateTime>", "Don't know how to deserialize dateTime"},
  };
  for (auto [content, value] : rows) EXPECT_EQ(read(content), value) << content;
}

TEST(ValueReader, ReadsArrays) {
  const char* onlyData = "<array> should only containa single <data> element";
  const char* onlyValues = "non-value element found in <data> part of <array>";
  const std::pair<const char*, const char*> rows[] = {
      {"<array/>", onlyData},
      {"<array><value/></array>", onlyData},
      {"<array><x:data/></array>", onlyData},
      {"<array><DATA/></array>", "[]"},
      {"<array><data/><data><value>x</value></data></array>", "[]"}, /* the first one alone */
      {"<array><data><value>1</value><value/></data></array>", "['1', '']"},
      {"<array><data><VALUE><i4>1</i4></VALUE><value><array><data/></array></value></data></array>",
       "[1, []]"},
      {"<array><data><value/><x/></data></array>", onlyValues},
      {"<array><data>text</data></array>", onlyValues},
  };
  for (auto [content, value] : rows) EXPECT_EQ(read(content), value) << content;
  EXPECT_EQ(readArray("<value>1</value><value><nil/></value><x/>"), "Don't know how to deserialize nil")
      << "the first message counts";
}

TEST(ValueReader, ReadsStructs) {
  const std::pair<const char*, const char*> rows[] = {
      {"", "{}"},
      {"<member><name>a</name><value><i4>1</i4></value></member>", "{a: 1}"},
      {"<anything><VALUE>x</VALUE><NAME>a&lt;</NAME></anything>", "{a<: 'x'}"}, /* either order */
      {"<member><name>a</name><value/></member>", "{a: null}"},
      {"<member><name>a</name></member><member><value>x</value></member>", "{}"}, /* half a member is none */
      {"<member><name>a</name><value>x</value><extra/></member>", "{a: 'x'}"},
      {"<member><name>a</name><value>x</value></member><member><name>a</name><value>y</value></member>",
       "{a: 'y'}"},
      {"<member><name/><value>x</value></member>", "missing <name> element for <member>"},
      {"<member><name/><name>a</name></member>", "{a: null}"},
      {"<member/>", "empty <member> element"},
      {"text", "empty <member> element"},
      {"<member><name>a</name><name>b</name></member>", "too many <name> elements for a <member>"},
      {"<member><value>1</value><value>2</value></member>", "too many <value> elements for a <member>"},
      {"<member><value/><value>2</value></member>", "missing <name> element for <member>"},
      {"<member><extra/></member>", "unknown element in <member>"},
      {"<member><name>a</name><extra/></member>", "unknown element in <member>"},
      {"<member><x:name>a</x:name><value/></member>", "unknown element in <member>"},
      {"<member><name>a</name><value><nil/></value></member>", "Don't know how to deserialize nil"},
  };
  for (auto [content, value] : rows) EXPECT_EQ(readStruct(content), value) << content;
}

TEST(ValueReader, MemberNamesAreNotMixedUp) {
  auto member = [](const std::string& name) {
    return "<member><name>" + name + "</name><value>x</value></member>";
  };
  EXPECT_EQ(readStruct(member("foo") + member("&foo;") + member("<![CDATA[f]]>oo2")),
            "{foo: 'x', <<Unknown Escape>>: 'x', foo2: 'x'}");
  std::string members, expected;
  for (int i = 0; i < 300; ++i) {
    members += member(std::to_string(i * 37));
    expected += (i > 0 ? ", " : "") + std::to_string(i * 37) + ": 'x'";
  }
  EXPECT_EQ(readArray("<value><struct>" + members + "</struct></value><value><struct>" + members +
                      "</struct></value>"),
            "[{" + expected + "}, {" + expected + "}]");
}

}  // namespace
