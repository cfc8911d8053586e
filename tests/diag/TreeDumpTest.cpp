#include "diag/TreeDump.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"

namespace {

using namespace support;

/* The dump with "0x" in place of each address. */
std::string dump(const Value& document, int depth) {
  testing::internal::CaptureStderr();
  vx::dumpXMLTree(document, depth);
  std::string lines = testing::internal::GetCapturedStderr();
  for (size_t start = 0; (start = lines.find("0x", start)) != std::string::npos;) {
    start += 2;
    size_t end = lines.find_first_not_of("0123456789abcdef", start);
    EXPECT_GT(end, start) << "an address has digits";
    lines.erase(start, end - start);
  }
  return lines;
}

TEST(TreeDump, ShowsNodesWithTheirAttributesByLevel) {
  Value document = tree(
      "<r:root b='&#10;2' a='1 &amp; &lt;'> <inner>some<![CDATA[ <raw> ]]>&undeclared;</inner>\n <empty/>"
      "<!-- a comment --></r:root>");
  EXPECT_EQ(dump(document, 0),
            "   - 0x: type kBQXMLNodeTypeElement, name r:root\n"
            "      [ -- 2 ATTRIBUTES --\n"
            "        { b: \\u000a2 }\n"
            "        { a: 1 & < }\n"
            "      ]\n"
            "     - 0x: type kBQXMLNodeTypeElement, name inner\n"
            "       - 0x: type kBQXMLNodeTypeText, name some\n"
            "       - 0x: type kBQXMLNodeTypeCDATASection, name  <raw> \n"
            "       - 0x: type kBQXMLNodeTypeEntityReference, name undeclared\n"
            "     - 0x: type kBQXMLNodeTypeElement, name empty\n");
}

TEST(TreeDump, IndentsNoDeeperThanThirtyBlanks) {
  Value document = tree("<a x='1'><b/></a>");
  EXPECT_EQ(dump(document, 11), std::string(24, ' ') + " - 0x: type kBQXMLNodeTypeElement, name a\n" +  //
                                    std::string(28, ' ') + "[ -- 1 ATTRIBUTES --\n" +                   //
                                    std::string(30, ' ') + "{ x: 1 }\n" +                               //
                                    std::string(28, ' ') + "]\n" +                                      //
                                    std::string(26, ' ') + " - 0x: type kBQXMLNodeTypeElement, name b\n");
  EXPECT_EQ(dump(tree("<a/>"), 19), std::string(30, ' ') + " - 0x: type kBQXMLNodeTypeElement, name a\n");
}

TEST(TreeDump, OfNothingPrintsNothing) {
  EXPECT_EQ(dump(Value(), 0), "");
  EXPECT_EQ(dump(Value::retain(BQTreeGetFirstChild(tree("<a/>"))), 0), "");
  testing::internal::CaptureStderr();
  vx::_describeChild(nullptr, nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), " - 0x0: type ??unknown node type??, name (null)\n");
}

}  // namespace
