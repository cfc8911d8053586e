#include "soap/SOAPValueReader.h"

#include <gtest/gtest.h>

#include <VX/VXConstants.h>

#include <string>

#include "soap/SOAPProtocolHandler.h"
#include "support/Values.h"
#include "xml/ElementWalk.h"

namespace {

using namespace support;

const std::string kNamespaces =
    " xmlns:xsd='http://www.w3.org/2001/XMLSchema' xmlns:old='http://www.w3.org/1999/XMLSchema'"
    " xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'"
    " xmlns:oldi='http://www.w3.org/1999/XMLSchema-instance'"
    " xmlns:enc='http://schemas.xmlsoap.org/soap/encoding/' xmlns:s='urn:service'";

/* The value of the first child of a root with these children, or the message. */
std::string readIn(vx::SOAPProtocolHandler& handler, const std::string& children) {
  Value document = tree("<root" + kNamespaces + ">" + children + "</root>");
  const BQTree* root = BQTreeGetFirstChild(document);
  vx::NamespaceMap namespaces;
  vx::xmlGetElementNamespaces(root, &namespaces);
  vx::ReferenceBudget budget;
  vx::SOAPValueReader reader(root, &handler, &budget);
  auto value = reader.parseSOAPType(BQTreeGetFirstChild(root), namespaces);
  Value message = Value::adopt(reader.takeError());
  return message.get() != nullptr ? "! " + text(message.get()) : notation(value.get());
}

std::string read(const std::string& children) {
  vx::SOAPProtocolHandler handler(kVXSOAP2001Protocol);
  return readIn(handler, children);
}

TEST(SOAPValue, HasTheKindOfItsType) {
  const struct {
    const char* type;
    const char* content;
    const char* value;
  } rows[] = {
      {"xsd:int", "42", "42"},
      {"any:int", "42", "42"},
      {"xsd:long", "4294967296", "4294967296L"},
      {"xsd:int", "x", "0"},
      {"xsd:INT", "42", "42"},
      {"xsd:integer", "42", "'42'"},
      {"xsd:boolean", "yes", "true"},
      {"xsd:boolean", "FALSE", "false"},
      {"xsd:boolean", "0", "false"},
      {"xsd:boolean", "nil", "true"},
      {"xsd:BOOLEAN", "Nil", "false"},
      {"xsd:double", "2.5", "2.5d"},
      {"xsd:decimal", "x", "0d"},
      {"xsd:FLOAT", "2.5", "2.5d"},
      {"xsd:string", "a<![CDATA[<b>]]>c&amp;", "'a<b>c&'"},
      {"xsd:STRING", "a", "'a'"},
      {"xsd:string", "<b>x</b>", "{b: 'x'}"},
      {"xsd:dateTime", "2005-02-28T13:45:09Z", "@2005-02-28T13:45:09"},
      {"xsd:TimeInstant", "2005-02-28T13:45:09Z", "@2005-02-28T13:45:09"},
      {"xsd:base64Binary", "T W\nFu", "<4d616e>"},
      {"enc:base64", "TWFu", "<4d616e>"},
      {"ENC:Base64", "TWFu", "'TWFu'"},
      {"enc:BASE64", "TWFu", "<4d616e>"},
      {"xsd:nil", "text", "null"},
      {"enc:Array", "<a>1</a><b>2</b>", "['1', '2']"},
      {"enc:ARRAY", "<a>1</a>", "['1']"},
      {"enc:Dictionary", "<a>1</a>", "{a: '1'}"},
      {"enc:DICTIONARY", "<a>1</a>", "{a: '1'}"},
      {"s:Point", "<x>1</x><y>2</y>", "{x: '1', y: '2'}"},
      {"s:Point", "text", "'text'"},
      {"s:Point", "a<![CDATA[b]]>", "{a: null, b: null}"},
      {"s:int", "42", "'42'"},
      {"int", "42", "'42'"},
      {"", "42", "'42'"},
      {":", "42", "'42'"},
      {"http://www.w3.org/2001/XMLSchema|int", "42", "42"},
  };
  for (const auto& row : rows) {
    for (const char* attribute : {"xsi:type", "oldi:TYPE", "type"}) {
      EXPECT_EQ(read("<v " + std::string(attribute) + "='" + row.type + "'>" + row.content + "</v>"),
                row.value)
          << attribute << " " << row.type << " " << row.content;
    }
  }
}

TEST(SOAPValue, WithoutATypeHasTheKindOfItsShape) {
  const std::pair<const char*, const char*> rows[] = {
      {"<v/>", "null"},
      {"<v xsi:type='xsd:string'/>", "null"},
      {"<v xsi:type='enc:Dictionary'/>", "null"},
      {"<v enc:arrayType='xsd:int[0]'/>", "[]"},
      {"<v xmlns:e='http://schemas.xmlsoap.org/soap/encoding/' e:ArrayType=''/>", "[]"},
      {"<v s:arrayType='xsd:int[0]'/>", "null"},
      {"<v arrayType='xsd:int[0]'/>", "null"},
      {"<v>text</v>", "'text'"},
      {"<v>\n a &lt; \n</v>", "'\n a < \n'"},
      {"<v><![CDATA[]]></v>", "''"},
      {"<v><a/><b>x</b></v>", "{a: null, b: 'x'}"},
      {"<v><p:a>1</p:a></v>", "{p:a: '1'}"},
      {"<v enc:arrayType='xsd:int[9]'>\n <a>1</a>\n <a><b>2</b></a>\n</v>", "['1', {b: '2'}]"},
      {"<v enc:arrayType='xsd:int[9]' xsi:type='s:List'><a>1</a></v>", "['1']"},
      {"<v enc:arrayType='x[2000000000]' xsi:type='enc:Array'><a xsi:type='xsd:int'>1</a></v>", "[1]"},
      {"<v s:type='xsd:int'>5</v>", "5"},
      {"<v xmlns='urn:other' s:type='xsd:int'>5</v>", "'5'"},
      {"<v xmlns='urn:service' s:type='xsd:int'>5</v>", "5"},
      {"<v xmlns:xsd='urn:other' xsi:type='xsd:int'>5</v>", "'5'"},
      {"<v XMLNS:t='http://www.w3.org/2001/XMLSchema' xsi:type='t:int'>5</v>", "5"},
      {"<v xmlns:='urn:service' xmlnst='urn:service' s:type='xsd:int'>5</v>", "5"},
      {"<v xmlns:t:u='http://www.w3.org/2001/XMLSchema' xsi:type='t:u:int'>5</v>", "5"},
      {"<v><a xsi:type='xsd:int'>1</a><a>2</a><b/><a>3</a></v>", "{a: [1, '2', '3'], b: null}"},
      {"<v><a enc:arrayType=''><i>1</i></a><a>2</a><a enc:arrayType=''/></v>", "{a: ['1', '2', []]}"},
      {"<v><a/><a/></v>", "{a: [null, null]}"},
  };
  for (auto [element, value] : rows) EXPECT_EQ(read(element), value) << element;
}

TEST(SOAPValue, MayStandElsewhere) {
  const std::pair<const char*, const char*> rows[] = {
      {"<v href='#id3'/><r ID='ID3' xsi:type='xsd:int'>5</r>", "5"},
      {"<v href='id3'/><r s:id='id3'>x</r>", "'x'"},
      {"<v xsi:HREF='#a'/><r id='a'>1</r><r id='a'>2</r>", "'1'"},
      {"<v href='##a'/><r id='#a'>1</r>", "'1'"},
      {"<v href='#a' xsi:type='xsd:int'/><r id='a'>5</r>", "'5'"},
      {"<v href='#a'>own</v><r id='a'>1</r>", "'own'"},
      {"<v href='#a'/><r id='a' xmlns:t='http://www.w3.org/2001/XMLSchema' xsi:type='t:int'>5</r>", "5"},
      {"<v enc:arrayType='' href='#a'/><r id='a'>5</r>", "'5'"},
      {"<v enc:arrayType=''><i href='#a'/><i href='#a'/></v><r id='a' xsi:type='xsd:double'>5</r>",
       "[5d, 5d]"},
      {"<v enc:arrayType=''><i href='#a'/><i xmlns:xsd='urn:o' href='#a'/><i href='#a'/></v>"
       "<r id='a' xsi:type='xsd:int'>5</r>",
       "[5, '5', 5]"},
      {"<v href='#a'/><r id='a'/>", "{}"},
      {"<v href='#a'/><r id='a' href='#b'/><r id='b'>x</r>", "{}"},
      {"<v href='#a'/><r id='a' xsi:type='xsd:int'/>", "0"},
      {"<v href='#a'/><r id='a' enc:arrayType=''/>", "[]"},
      {"<v href=''/><r id=''/>", "! Can't locate anchor element in reply"},
      {"<v href='#'/><r id=''/>", "! Can't locate anchor element in reply"},
      {"<v href='#a'/><r><q id='a'/></r>", "! Can't locate anchor element in reply"},
      {"<v><w><u href='#a'/></w><x>y</x></v>", "! Can't locate anchor element in reply"},
      {"<v xmlns='urn:other' s:href='#a'/>", "null"},
  };
  for (auto [elements, value] : rows) EXPECT_EQ(read(elements), value) << elements;
}

BQTypeRef overridden(VXMethodInvocationRef, const BQTree* element, const BQTree* root, void*) {
  EXPECT_EQ(text(BQXMLNodeGetString(BQXMLTreeGetNode(root))), "root");
  return BQStringCreateWithFormat(BQSTR("<%@>"), BQXMLNodeGetString(BQXMLTreeGetNode(element)));
}

TEST(SOAPValue, OverridesComeFirst) {
  const struct {
    const char* uri;
    const char* name;
    const char* elements;
    const char* value;
  } rows[] = {
      {"*", "v", "<v xsi:type='xsd:int'>5</v>", "'<v>'"},
      {"urn:service", "v", "<s:V/>", "'<s:V>'"},
      {"urn:other", "v", "<s:v>x</s:v>", "'x'"},
      {"", "a", "<v><a/><b/></v>", "'<a>'"},
      {"", "b", "<v><a/><b/></v>", "{a: null, b: '<b>'}"},
      {"*", "b", "<v enc:arrayType=''><a/><b/></v>", "[null, '<b>']"},
      {"*", "v", "<v href='#none'/>", "'<v>'"},
      {"*", "r", "<v href='#a'/><r id='a'>x</r>", "'x'"},
  };
  for (const auto& row : rows) {
    vx::SOAPProtocolHandler handler(kVXSOAP2001Protocol);
    handler.addDeserializationOverride(string(row.uri), string(row.name), overridden, nullptr);
    EXPECT_EQ(readIn(handler, row.elements), row.value) << row.elements;
  }
}

}  // namespace
