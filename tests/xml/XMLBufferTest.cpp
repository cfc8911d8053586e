#include "xml/XMLBuffer.h"

#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;
using namespace std::string_literals;
using vx::XMLBuffer;

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";

std::string documentOf(const XMLBuffer& buffer) {
  return bytes(Value::adopt(buffer.copyData()));
}

TEST(XMLBuffer, BeginsWithTheDeclarationOfItsEncoding) {
  EXPECT_EQ(documentOf(XMLBuffer(kBQStringEncodingUTF8)), kDeclaration);
  EXPECT_EQ(documentOf(XMLBuffer(kBQStringEncodingISOLatin1)),
            "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n");
  for (unsigned long unknown : {0x7777ul, 0xFFFFFFFFul, 0x108000100ul}) {
    XMLBuffer buffer(unknown);
    buffer.addTo(0, "%@", BQSTR("\u65e5"));
    EXPECT_EQ(documentOf(buffer), kDeclaration + "\u65e5\r\n") << unknown;
  }
}

TEST(XMLBuffer, IndentsByLevel) {
  const std::pair<int, size_t> rows[] = {{0, 0},   {1, 2},   {3, 6},   {14, 28},        {15, 30},
                                         {16, 30}, {40, 30}, {-1, 30}, {INT32_MIN, 30}, {INT32_MAX, 30}};
  for (auto [level, blanks] : rows) {
    EXPECT_EQ(text(XMLBuffer::getIndentString(level)), std::string(blanks, ' ')) << level;
    XMLBuffer formatted(kBQStringEncodingUTF8), pieced(kBQStringEncodingUTF8);
    formatted.addTo(level, "x");
    pieced.addLine(level, {"x"});
    EXPECT_EQ(documentOf(formatted), kDeclaration + std::string(blanks, ' ') + "x\r\n") << level;
    EXPECT_EQ(documentOf(pieced), documentOf(formatted)) << level;
  }
}

TEST(XMLBuffer, LinesEndWithCRLF) {
  XMLBuffer buffer(kBQStringEncodingUTF8);
  buffer.addTo(1, "");
  buffer.addTo(1, "%d %g %@ %%", 5, 2.5, BQSTR("<&>"));
  buffer.addTo(0, BQSTR("\u00e9\nsecond %s"), "part");
  buffer.addLine(0, {});
  buffer.addEncodedLine(1, {"<a>"}, BQSTR("<'b'>"), {"</a>"});
  buffer.addEncodedLine(0, {}, nullptr, {});
  EXPECT_EQ(documentOf(buffer), kDeclaration + "  \r\n  5 2.5 <&> %\r\n\u00e9\nsecond part\r\n\r\n"
                                               "  <a>&lt;&apos;b&apos;&gt;</a>\r\n\r\n");
  buffer.addTo(0, "more");
  EXPECT_NE(documentOf(buffer).find("more\r\n"), std::string::npos) << "usable after a copy was taken";
}

TEST(XMLBuffer, HasNoBytesWhenTheEncodingLacksACharacter) {
  XMLBuffer ascii(kBQStringEncodingASCII), latin1(kBQStringEncodingISOLatin1);
  for (XMLBuffer* buffer : {&ascii, &latin1}) buffer->addTo(0, "%@", BQSTR("\u00e9"));
  EXPECT_EQ(documentOf(ascii), "(null)");
  EXPECT_EQ(documentOf(latin1), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n\xe9\r\n");
}

TEST(XMLBuffer, IsVoidOnceContainersAreNestedTooDeep) {
  XMLBuffer buffer(kBQStringEncodingUTF8);
  for (int depth = 0; depth < 512; ++depth) ASSERT_TRUE(buffer.enterContainer());
  EXPECT_EQ(documentOf(buffer), kDeclaration) << "512 levels are allowed";
  EXPECT_FALSE(buffer.enterContainer());
  for (int depth = 0; depth < 512; ++depth) buffer.leaveContainer();
  EXPECT_FALSE(buffer.enterContainer()) << "nothing more is worth writing";
  EXPECT_EQ(documentOf(buffer), "(null)");
}

}  // namespace
