#include "xml/XMLBuffer.h"

#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;
using vx::XMLBuffer;

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";

std::string documentOf(const XMLBuffer& buffer) {
  return bytes(Value::adopt(buffer.copyData()));
}

TEST(XMLBuffer, IsInTheEncodingThatItDeclares) {
  auto document = [](unsigned long encoding) {
    XMLBuffer buffer(encoding);
    buffer.addTo(0, "%@", BQSTR("\u00e9"));
    return documentOf(buffer);
  };
  EXPECT_EQ(documentOf(XMLBuffer(kBQStringEncodingUTF8)), kDeclaration);
  EXPECT_EQ(document(kBQStringEncodingISOLatin1),
            "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n\xe9\r\n");
  EXPECT_EQ(document(kBQStringEncodingASCII), "(null)") << "it lacks the character";
  for (unsigned long unknown : {0x7777ul, 0xFFFFFFFFul, 0x108000100ul}) {
    EXPECT_EQ(document(unknown), kDeclaration + "\u00e9\r\n") << unknown;
  }
}

TEST(XMLBuffer, IndentsByLevel) {
  const std::pair<int, size_t> rows[] = {{0, 0},   {1, 2},   {14, 28},        {15, 30},
                                         {40, 30}, {-1, 30}, {INT32_MIN, 30}, {INT32_MAX, 30}};
  for (auto [level, blanks] : rows) {
    EXPECT_EQ(text(XMLBuffer::getIndentString(level)), std::string(blanks, ' ')) << level;
    XMLBuffer formatted(kBQStringEncodingUTF8), pieced(kBQStringEncodingUTF8);
    formatted.addTo(level, "x");
    pieced.addLine(level, {"x"});
    EXPECT_EQ(documentOf(formatted), kDeclaration + std::string(blanks, ' ') + "x\r\n") << level;
    EXPECT_EQ(documentOf(pieced), documentOf(formatted)) << level;
  }
}

}  // namespace
