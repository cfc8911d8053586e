#include "xml/Base64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "support/Values.h"
#include "xml/XMLBuffer.h"

namespace {

using namespace support;
using namespace std::string_literals;

std::string encoded(const std::string& plain, int indent) {
  return text(Value::adopt(vx::encodeBinaryData(blob(plain), indent)).get());
}

std::string decoded(const std::string& encodedText) {
  return bytes(Value::adopt(vx::decodeBinaryData(string(encodedText))));
}

/* The characters without any layout, bit by bit. */
std::string charactersOf(const std::string& plain) {
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  auto bitAt = [&](size_t i) {
    return i / 8 < plain.size() ? static_cast<unsigned char>(plain[i / 8]) >> (7 - i % 8) & 1 : 0;
  };
  std::string result;
  for (size_t bit = 0; bit < plain.size() * 8; bit += 6) {
    size_t sextet = 0;
    for (size_t i = 0; i < 6; ++i) sextet = 2 * sextet + static_cast<size_t>(bitAt(bit + i));
    result += alphabet[sextet];
  }
  return result + std::string((4 - result.size() % 4) % 4, '=');
}

/* The characters in lines; a line that is full without padding ends with a line feed. */
std::string layoutOf(const std::string& plain, int indent) {
  auto used = static_cast<size_t>(std::clamp(indent, 0, 8));
  std::string characters = charactersOf(plain), result;
  for (size_t start = 0; start < characters.size(); start += 76 - 4 * used) {
    std::string line = characters.substr(start, 76 - 4 * used);
    result += std::string(used / 2, '\t') + line;
    if (line.size() == 76 - 4 * used && line.back() != '=') result += '\n';
  }
  return result;
}

TEST(Base64, IsLaidOutByIndentForEverySize) {
  std::string plain;
  for (int length = 0; length < 180; ++length, plain += static_cast<char>(length * 37)) {
    for (int indent = -1; indent < 11; ++indent) {
      std::string expected = layoutOf(plain, indent);
      ASSERT_EQ(encoded(plain, indent), expected) << length << " bytes, indent " << indent;
      vx::XMLBuffer buffer(kBQStringEncodingUTF8);
      buffer.addBase64Line(0, {"<"}, blob(plain), indent, {">"});
      ASSERT_EQ(bytes(Value::adopt(buffer.copyData())).substr(40), "<" + expected + ">\r\n");
      ASSERT_EQ(decoded(expected), plain);
    }
  }
}

TEST(Base64, ReadsWhateverItIsGiven) {
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},
      {"TWFu", "Man"},
      {"TW==", "M"},
      {"TWE=", "Ma"},
      {" T\tW\r\nF\v\fu ", "Man"},
      {"TW", ""},
      {"TWFuTW", "Man"},       /* an incomplete group is dropped */
      {"T-W_F.u!\x7f", "Man"}, /* other characters are skipped */
      {"TWFu<TWFu", "Man"},
      {"TW<Fu", ""}, /* "<" ends the text */
      {"TW=\n=", "M"},
      {"TW=*=", "M`"}, /* white space between pads, and a character that takes one away */
      {"====", "\0"s},
      {"TWFu====TWFu", "Man\0Man"s},
      {"TWE=TWFu", "MaMan"},
      {"TWFuT=W=", "ManL\x05"}};
  for (const auto& [characters, plain] : rows) EXPECT_EQ(decoded(characters), plain) << characters;
  EXPECT_EQ(decoded("TWFu\u00e9"), "(null)") << "not ASCII";
  EXPECT_EQ(vx::decodeBinaryData(nullptr), nullptr);
  const char beyond[] = "T\xc3\xa9WFu";
  EXPECT_EQ(bytes(Value::adopt(vx::__BQPLDataDecode(beyond, beyond + 6))), "Man") << "as bytes it is skipped";
}

}  // namespace
