#include "xml/TreeAccess.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"

namespace {

using namespace support;

TEST(TreeAccess, LooksAtOnePosition) {
  Value document = tree("<r:Root a='1'>text<![CDATA[raw]]>&other;<empty/></r:Root>");
  const BQTree* root = BQTreeGetFirstChild(document);
  const struct {
    const BQTree* position;
    const char* name;
    bool isElement;
  } rows[] = {
      {root, "r:Root", true},
      {BQTreeGetFirstChild(root), "text", false},
      {BQTreeGetNextSibling(BQTreeGetFirstChild(root)), "raw", false},
      {BQTreeGetNextSibling(BQTreeGetNextSibling(BQTreeGetFirstChild(root))), "other", false},
      {nullptr, "", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(text(vx::getElementName(row.position)), row.name);
    EXPECT_EQ(vx::treeIsElement(row.position), row.isElement) << row.name;
    EXPECT_EQ(vx::treeGetElementInfo(row.position) != nullptr, row.isElement) << row.name;
    EXPECT_EQ(vx::treeGetNode(row.position) == nullptr, row.position == nullptr);
  }
  EXPECT_EQ(notation(vx::treeGetElementInfo(root)->attributes), "{a: '1'}");
  EXPECT_EQ(vx::treeGetElementInfo(document), nullptr) << "the document is no element";
}

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
  const std::pair<const char*, const char*> rows[] = {
      {"p:name", "'name'"}, {"a:b:c", "'b:c'"}, {"p:", "''"}, {":x", "'x'"}, {"name", "-"}, {"", "-"}};
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
