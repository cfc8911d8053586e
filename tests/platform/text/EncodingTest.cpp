#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/text/Encoding.h"
#include "platform/text/EncodingTable.h"
#include "platform/text/EncodingUTF16.h"
#include "support/PlatformValues.h"

namespace {

using namespace values;
using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr BQStringEncoding kShiftJIS = 0x0A01, kEUCJP = 0x0920, kISO2022JP = 0x0820, kGB18030 = 0x0632;
constexpr BQStringEncoding kLatin9 = 0x020F, kVietnamese = 0x0508, kUnknown = 0x0999;

/* The text of bytes, or "(none)". */
std::string decode(std::string_view bytes, BQStringEncoding encoding) {
  return text(own(BQStringCreateWithBytes(bytes.data(), std::ssize(bytes), encoding)));
}

/* The bytes of a text, or "(none)". */
std::string encode(std::string_view text, BQStringEncoding encoding, uint8_t lossByte = 0) {
  return bytes(own(BQStringCreateExternalRepresentation(string(text).get(), encoding, lossByte)).get());
}

struct Row {
  BQStringEncoding encoding;
  std::string_view text, bytes;
  bool isWritten = true;
};

TEST(Encoding, ConvertsBothWays) {
  const Row kRows[] = {
      {kBQStringEncodingUTF8, "a\0\u07FF\u0800\uFFFF\U0010FFFF"sv,
       "a\0\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF"sv},
      {kBQStringEncodingASCII, "a\0~\x7F"sv, "a\0~\x7F"sv},
      {kBQStringEncodingISOLatin1, "0123456789abcdefé\0ÿ\u0080 end"sv,
       "0123456789abcdef\xE9\0\xFF\x80 end"sv},
      {kBQStringEncodingUTF16, "€\uD7FF\uE000\U0010FFFF", "\xFE\xFF\x20\xAC\xD7\xFF\xE0\0\xDB\xFF\xDF\xFF"sv},
      {kBQStringEncodingUTF16, "€", "\xFF\xFE\xAC\x20", false},
      {kBQStringEncodingUTF16, "€", "\x20\xAC", false},
      {kBQStringEncodingUTF16, "\uFEFF", "\xFE\xFF\xFE\xFF"}, /* only the first is a mark */
      {kBQStringEncodingUTF16, "", "", false},
      {kBQStringEncodingUTF16LE, "A€😀", "A\0\xAC\x20\x3D\xD8\x00\xDE"sv},
      {kBQStringEncodingUTF32, "A😀", "\0\0\xFE\xFF\0\0\0A\0\1\xF6\0"sv},
      {kBQStringEncodingUTF32, "A", "\xFF\xFE\0\0A\0\0\0"sv, false},
      {bq::kUTF32BE, "\uD7FF\U0010FFFF", "\0\0\xD7\xFF\0\x10\xFF\xFF"sv},
      {bq::kUTF32LE, "A😀", "A\0\0\0\0\xF6\1\0"sv},
      {kShiftJIS, "日本\\~ｱ", "\x93\xFA\x96\x7B\\~\xB1"},
      {kISO2022JP, "a日本b", "a\x1B$BF|K\\\x1B(Bb"},
      {kGB18030, "中€😀\U000E0041", "\xD6\xD0\xA2\xE3\x94\x39\xFC\x36\xD3\x36\x9C\x33"},
      {kVietnamese, "\u00E9", "e\xEC", false}, /* a base letter waits for its accent */
  };
  for (const auto& [encoding, text, bytes, isWritten] : kRows) {
    EXPECT_EQ(decode(bytes, encoding), text);
    EXPECT_TRUE(encode(text, encoding) == bytes || !isWritten) << text;
    std::string longText;
    for (int i = 0; i < 20'000; ++i) longText += text;
    EXPECT_TRUE(decode(encode(longText, encoding), encoding) == longText || !isWritten) << text;
  }
  auto marked = own(BQDataCreate("\xEF\xBB\xBFx", 4));
  EXPECT_EQ(text(own(BQStringCreateFromExternalRepresentation(marked.get(), kBQStringEncodingUTF8))), "x");
}

TEST(Encoding, MalformedBytesAreRefused) {
  const std::pair<BQStringEncoding, std::vector<std::string_view>> kRows[] = {
      /* A start is missing; the rest; a continuation. Overlong; a surrogate; beyond U+10FFFF. */
      {kBQStringEncodingUTF8,
       {"\x80", "\xFF", "\xC3", "\xE2\x82", "\xF0\x9F\x98", "\xE2(\xAC", "\xF0\x9F\x98(", "\xC1\xBF",
        "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"}},
      {kBQStringEncodingASCII, {"\x80"}},
      {kBQStringEncodingUTF16, {"\xFE\xFF\0"sv}},
      {kBQStringEncodingUTF16BE,
       {"\0A\0"sv, "\xD8\x3D", "\xD8\x3D\0A"sv, "\xD8\0\xE0\0"sv, "\xDC\x00\0A"sv, "\xDF\xFF"}},
      {bq::kUTF32BE, {"\0\0\0"sv, "\0\0\xD8\0"sv, "\0\0\xDF\xFF"sv, "\0\x11\0\0"sv}},
      {kShiftJIS, {"\x93"}},
      {kEUCJP, {"\xC6 "}},
      {kISO2022JP, {"\x1B$", "\x1B$BF"}},
      {kBQStringEncodingWindowsLatin1, {"\x81"}},
      {kUnknown, {"a"}},
  };
  for (const auto& [encoding, rows] : kRows) {
    for (std::string_view bytes : rows) {
      EXPECT_EQ(decode(bytes, encoding), "(none)");
      EXPECT_EQ(decode("0123456789abcdef" + std::string(bytes), encoding), "(none)");
    }
  }
  EXPECT_EQ(decode("F|", kISO2022JP), "F|") << "no shift state stays from a failure";
}

TEST(Encoding, CharactersThatItLacksBecomeTheLossByte) {
  const Row kRows[] = {
      {kBQStringEncodingASCII, "aéb😀", "a?b?"},
      {kBQStringEncodingISOLatin1, "é€ÿĀ", "\xE9?\xFF?"},
      {kISO2022JP, "日é本", "\x1B$BF|\x1B(B?\x1B$BK\\\x1B(B"},
      {kLatin9, "a\U000E0041b\U000E007F", "a?b?"}, /* which the C library would leave out */
  };
  for (const Row& row : kRows) {
    EXPECT_EQ(encode(row.text, row.encoding), "(none)");
    EXPECT_EQ(encode(row.text, row.encoding, '?'), row.bytes) << "also right after a failure";
  }
  EXPECT_EQ(encode("日", kBQStringEncodingWindowsLatin1, 0xA4), "\xA4");
}

TEST(Encoding, MalformedUTF8IsFoundAtEveryOffset) {
  for (size_t offset = 0; offset < 40; ++offset) {
    for (std::string text : {"é", "€", "😀"}) {
      text = std::string(offset, 'a') + text + std::string(40 - offset, 'b');
      EXPECT_EQ(decode(text, kBQStringEncodingUTF8), text);
      text.erase(text.find('b') - 1, offset % 2);
      text[offset] = offset % 2 == 0 ? '\xFE' : text[offset];
      EXPECT_EQ(decode(text, kBQStringEncodingUTF8), "(none)") << offset;
    }
  }
}

BQStringEncoding encodingNamed(std::string_view name) {
  return BQStringConvertIANACharSetNameToEncoding(string(name).get());
}

/* What a byte means, it means in both directions, and no name is used twice. */
TEST(Encoding, EachOfTheTableHoldsWhatItPromises) {
  std::set<std::string> names;
  for (const bq::EncodingRecord& record : bq::allEncodings()) {
    SCOPED_TRACE(record.name.bytes);
    EXPECT_TRUE(BQStringIsEncodingAvailable(record.number));
    EXPECT_EQ(text(BQStringConvertEncodingToIANACharSetName(record.number)), record.name.bytes);
    EXPECT_EQ(encodingNamed(record.name.bytes), record.number);
    std::istringstream aliases(record.aliases);
    for (std::string alias; aliases >> alias;) {
      EXPECT_EQ(encodingNamed(alias), record.number);
      EXPECT_TRUE(names.insert(alias).second) << "twice: " << alias;
    }
    bool isSuperset = true;
    for (int byte = 0; byte < 0x100; ++byte) {
      const std::string bytes(1, static_cast<char>(byte)), decoded = decode(bytes, record.number);
      EXPECT_TRUE(decoded == "(none)" || encode(decoded, record.number) == bytes) << byte;
      if (byte < 0x80) isSuperset = isSuperset && decode(bytes + "a", record.number) == bytes + "a";
    }
    EXPECT_EQ(bq::isASCIISuperset(record.number), isSuperset);
  }
}

/* Numbers are stored in requests and never change. */
TEST(Encoding, IsFoundInAnySpelling) {
  std::istringstream rows(
      "utf8 08000100 csUTF8 08000100 us-ascii 600 ANSI_X3.4-1968 600 ISO_8859-1:1987 201 L1 201 Windows-1252 "
      "500 "
      "utf-16 100 UTF-16LE 14000100 UTF-32 0C000100 macintosh 0 KOI8-R A02 EUC-JP 920 GBK 421 shift-jis A01 "
      "gb2312 930 Big5 A03 KS_C_5601-1987 940");
  BQStringEncoding encoding;
  for (std::string name; rows >> name >> std::hex >> encoding;)
    EXPECT_EQ(encodingNamed(name), encoding) << name;
  for (const std::string& name :
       {""s, "-"s, "utf-9"s, "UTF-8 "s, "utf-8\0"s, "utf-7"s, "utf8" + std::string(61, '-')}) {
    EXPECT_EQ(encodingNamed(name), kBQStringEncodingInvalidId) << name;
  }
  for (const BQStringEncoding number : {kUnknown, 0x020Cu, kBQStringEncodingInvalidId}) {
    EXPECT_EQ(BQStringConvertEncodingToIANACharSetName(number), nullptr);
    EXPECT_FALSE(BQStringIsEncodingAvailable(number) || bq::isASCIISuperset(number));
  }
}

}  // namespace
