#include "diag/BodyText.h"

#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;
using namespace std::string_literals;

TEST(BodyText, IsReadableWhateverTheBytes) {
  const struct {
    std::string body;
    unsigned long encoding;
    std::string shown;
    const char* why;
  } rows[] = {
      {"<a>\r\n</a>\r", kBQStringEncodingUTF8, "<a>\n\n</a>\n", "each carriage return becomes a line feed"},
      {"", kBQStringEncodingUTF8, "", "an empty body"},
      {"\xc3\xa9\xe2\x82\xac", kBQStringEncodingUTF8, "\u00e9\u20ac", "as declared"},
      {"caf\xe9", kBQStringEncodingUTF8, "caf\u00e9", "malformed UTF-8 is read as ISO Latin-1"},
      {"caf\xe9", kBQStringEncodingASCII, "caf\u00e9", "malformed ASCII too"},
      {"caf\xe9", 0x7777, "caf\u00e9", "an unknown encoding too"},
      {"\0a\0b"s, kBQStringEncodingUTF16BE, "ab", "sixteen bits"},
  };
  for (const auto& row : rows) {
    Value body = blob(row.body);
    EXPECT_EQ(text(Value::adopt(vx::prettyPrintXML(body, row.encoding)).get()), row.shown) << row.why;
    EXPECT_EQ(bytes(body), row.body) << "the body itself stays as it is";
  }
  EXPECT_EQ(vx::prettyPrintXML(nullptr, kBQStringEncodingUTF8), nullptr);
}

}  // namespace
