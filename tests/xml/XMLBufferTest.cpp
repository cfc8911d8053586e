#include "xml/XMLBuffer.h"

#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;
using vx::XMLBuffer;

/* The lines behind the declaration. */
std::string linesOf(const XMLBuffer& buffer) {
  std::string document = bytes(Value::adopt(buffer.copyData()));
  return document.substr(document.find('\n') + 1);
}

TEST(XMLBuffer, WritesLinesThatAreIndentedByLevelAndEndWithCRLF) {
  const std::pair<int, size_t> rows[] = {{0, 0},   {1, 2},   {14, 28},        {15, 30},
                                         {40, 30}, {-1, 30}, {INT32_MIN, 30}, {INT32_MAX, 30}};
  for (auto [level, blanks] : rows) {
    XMLBuffer buffer(kBQStringEncodingUTF8);
    buffer.addTo(level, "%d %g %@ %%", 5, 2.5, BQSTR("<&>"));
    buffer.addTo(level, BQSTR("\u00e9\nsecond %s"), "part");
    buffer.addLine(level, {"a", "", "b"});
    buffer.addEncodedLine(level, {"<a>"}, BQSTR("<'b'>"), {"</a>"});
    const std::string indent(blanks, ' ');
    EXPECT_EQ(linesOf(buffer), indent + "5 2.5 <&> %\r\n" + indent + "\u00e9\nsecond part\r\n" + indent +
                                   "ab\r\n" + indent + "<a>&lt;&apos;b&apos;&gt;</a>\r\n")
        << level;
  }
}

}  // namespace
