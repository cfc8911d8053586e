#include "xml/TreeAccess.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"

namespace {

using namespace support;

TEST(TreeAccess, FindsElementsByLocalNameInDocumentOrder) {
  Value document = tree(
      "<top><n:skipped><p:MethodResponse id='1'/></n:skipped>text<methodresponse id='2'/>"
      "<a:b:c id='3'/><top id='4'/></top>");
  auto found = [&](const char* name) {
    const BQTree* element = vx::findNamedElement(document, string(name));
    return element == nullptr ? "-" : notation(vx::treeGetElementInfo(element)->attributes);
  };
  EXPECT_EQ(found("methodResponse"), "{id: '1'}") << "the prefix and the case are ignored";
  EXPECT_EQ(found("METHODRESPONSE"), "{id: '1'}");
  EXPECT_EQ(found("p:methodresponse"), "{id: '1'}") << "the whole name matches too";
  EXPECT_EQ(found("b:c"), "{id: '3'}") << "what stands behind the first colon";
  EXPECT_EQ(found("c"), "-");
  EXPECT_EQ(found("text"), "-") << "a text is no element";
  EXPECT_EQ(found("top"), "-") << "the outer one comes first and has no attributes";
  EXPECT_EQ(vx::findNamedElement(nullptr, BQSTR("a")), nullptr);
  const BQTree* inner = vx::findNamedElement(document, BQSTR("skipped"));
  EXPECT_EQ(vx::findNamedElement(inner, BQSTR("skipped")), nullptr) << "the position itself does not count";
}

TEST(TreeAccess, SplitsNamesAtTheFirstColon) {
  const std::pair<const char*, const char*> rows[] = {{"p:name", "'name'"}, {"a:b:c", "'b:c'"}, {"p:", "''"},
                                                      {":x", "'x'"},        {"name", "-"},      {"", "-"}};
  for (auto [name, local] : rows) {
    EXPECT_EQ(notation(Value::adopt(vx::copyQualifiedName(string(name))).get()), local) << name;
  }
  EXPECT_EQ(vx::copyQualifiedName(nullptr), nullptr);
}

TEST(TreeAccess, JoinsARunOfTexts) {
  const std::pair<const char*, const char*> rows[] = {
      {"<a>one</a>", "'one'"},
      {"<a>x &lt; &#233; y</a>", "'x < \u00e9 y'"},
      {"<a>x<![CDATA[ & <b> ]]>y<![CDATA[]]></a>", "'x & <b> y'"},
      {"<a>x&unknown;y</a>", "'x<<Unknown Escape>>y'"},
      {"<a>&unknown;</a>", "'<<Unknown Escape>>'"},
      {"<a>x<!-- dropped -->y</a>", "'xy'"},
      {"<a>x<b>inside</b>y</a>", "'x'"},
      {"<a><b/>x</a>", "-"},
      {"<a/>", "-"},
      {"<a> </a>", "-"},
      {"<a><![CDATA[]]></a>", "''"},
  };
  for (auto [document, joined] : rows) {
    Value parsed = tree(document);
    const BQTree* first = BQTreeGetFirstChild(BQTreeGetFirstChild(parsed));
    EXPECT_EQ(notation(Value::adopt(vx::copyXMLStringFromTree(first)).get()), joined) << document;
  }
}

TEST(TreeAccess, ACopiedTextDoesNotKeepTheDocument) {
  for (const char* document : {"<a>x</a>", "<a>x<![CDATA[y]]></a>"}) {
    Value parsed = tree(document);
    BQIndex count = BQGetRetainCount(parsed);
    Value copied = Value::adopt(vx::copyXMLStringFromTree(BQTreeGetFirstChild(BQTreeGetFirstChild(parsed))));
    EXPECT_EQ(BQGetRetainCount(parsed), count) << document;
  }
}

}  // namespace
