#include "platform/text/Encoding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "platform/text/EncodingTable.h"
#include "platform/text/EncodingUTF16.h"
#include "support/PlatformValues.h"

using namespace std::string_view_literals;

namespace {

constexpr BQStringEncoding kKOI8R = 0x0A02;
constexpr BQStringEncoding kShiftJIS = 0x0A01;
constexpr BQStringEncoding kEUCJP = 0x0920;
constexpr BQStringEncoding kISO2022JP = 0x0820;
constexpr BQStringEncoding kGB18030 = 0x0632;
constexpr BQStringEncoding kLatin9 = 0x020F;
constexpr BQStringEncoding kWindowsVietnamese = 0x0508;
constexpr BQStringEncoding kEBCDIC = 0x0C01;

const uint8_t* bytesOf(std::string_view text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

bool decode(std::string_view bytes, BQStringEncoding encoding, std::string& out) {
  return bq::decodeText(bytesOf(bytes), bytes.size(), encoding, out);
}

bool encode(std::string_view text, BQStringEncoding encoding, uint8_t lossByte, std::string& out) {
  return bq::encodeText(text.data(), text.size(), encoding, lossByte, out);
}

TEST(Encoding, TextAndBytes) {
  const std::tuple<BQStringEncoding, std::string_view, std::string_view> cases[] = {
      {kBQStringEncodingUTF8, "", ""},
      {kBQStringEncodingUTF8, "\u0080\u07FF\u0800\uFFFF\U00010000\U0010FFFF",
       "\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"},
      {kBQStringEncodingUTF8, "a\0é€😀"sv, "a\0\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"sv},
      {kBQStringEncodingASCII, "a\0~\x7F"sv, "a\0~\x7F"sv},
      {kBQStringEncodingISOLatin1, "0123456789abcdefé\0ÿ\u0080plain text behind"sv,
       "0123456789abcdef\xE9\0\xFF\x80plain text behind"sv},
      {kBQStringEncodingUTF16, "A€😀", "\xFE\xFF\0A\x20\xAC\xD8\x3D\xDE\x00"sv},
      {kBQStringEncodingUTF16BE, "A\0€😀"sv, "\0A\0\0\x20\xAC\xD8\x3D\xDE\x00"sv},
      {kBQStringEncodingUTF16LE, "A€😀", "A\0\xAC\x20\x3D\xD8\x00\xDE"sv},
      {kBQStringEncodingUTF16BE, "\uFEFF", "\xFE\xFF"},
      {kBQStringEncodingUTF32, "A😀", "\0\0\xFE\xFF\0\0\0A\0\1\xF6\0"sv},
      {bq::kUTF32BE, "A\U0010FFFF", "\0\0\0A\0\x10\xFF\xFF"sv},
      {bq::kUTF32LE, "A😀", "A\0\0\0\0\xF6\1\0"sv},
      {kBQStringEncodingWindowsLatin1, "€é\0Š"sv, "\x80\xE9\0\x8A"sv},
      {kBQStringEncodingWestern, "Äé†", "\x80\x8E\xA0"},
      {kLatin9, "€", "\xA4"},
      {kKOI8R, "Привет", "\xF0\xD2\xC9\xD7\xC5\xD4"},
      {kShiftJIS, "日本\\~ｱ", "\x93\xFA\x96\x7B\\~\xB1"},
      {kISO2022JP, "a日本b", "a\x1B$BF|K\\\x1B(Bb"},
      {kGB18030, "中€😀\U000E0041", "\xD6\xD0\xA2\xE3\x94\x39\xFC\x36\xD3\x36\x9C\x33"},
      {kEBCDIC, "Hello", "\xC8\x85\x93\x93\x96"},
  };
  for (const auto& [encoding, text, bytes] : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << encoding << " " << text);
    std::string decoded = "before ", encoded = "before ";
    EXPECT_TRUE(decode(bytes, encoding, decoded));
    EXPECT_EQ(decoded, "before " + std::string(text));
    EXPECT_TRUE(encode(text, encoding, 0, encoded));
    EXPECT_EQ(encoded, "before " + std::string(bytes));
  }
}

TEST(Encoding, ReadsWhatItWouldNotWrite) {
  const struct {
    BQStringEncoding encoding;
    std::string_view bytes;
    std::string_view text;
    const char* why;
  } cases[] = {
      {kBQStringEncodingUTF16, "\xFF\xFE\xAC\x20"sv, "€", "little-endian mark"},
      {kBQStringEncodingUTF16, "\x20\xAC"sv, "€", "big-endian without a mark"},
      {kBQStringEncodingUTF16, "\xFE\xFF\xFE\xFF"sv, "\uFEFF", "only the first is a mark"},
      {kBQStringEncodingUTF16, "\xFE\xFF"sv, "", "a mark and nothing else"},
      {kBQStringEncodingUTF16, "", "", "nothing at all"},
      {kBQStringEncodingUTF32, "\xFF\xFE\0\0A\0\0\0"sv, "A", "little-endian mark"},
      {kBQStringEncodingUTF32, "\0\0\0A"sv, "A", "big-endian without a mark"},
      {kWindowsVietnamese, "e\xEC"sv, "\u00E9", "a base letter that waits for its accent"},
      {kWindowsVietnamese, "e"sv, "e", "a base letter whose accent does not come"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.why);
    std::string decoded;
    EXPECT_TRUE(decode(test.bytes, test.encoding, decoded));
    EXPECT_EQ(decoded, test.text);
  }
}

TEST(Encoding, MalformedBytesAreRefused) {
  const struct {
    BQStringEncoding encoding;
    const char* why;
    std::vector<std::string_view> rows;
  } cases[] = {
      {kBQStringEncodingUTF8, "a start is missing", {"\x80", "\xFF"}},
      {kBQStringEncodingUTF8, "cut short", {"\xC3", "\xE2\x82", "\xF0\x9F\x98"}},
      {kBQStringEncodingUTF8, "continuation missing", {"\xE2(\xAC", "\xE2\x82(", "\xF0\x9F\x98("}},
      {kBQStringEncodingUTF8, "overlong", {"\xC0\xAF", "\xC1\xBF", "\xE0\x9F\xBF", "\xF0\x8F\xBF\xBF"}},
      {kBQStringEncodingUTF8, "surrogate", {"\xED\xA0\x80", "\xED\xBF\xBF"}},
      {kBQStringEncodingUTF8, "beyond U+10FFFF", {"\xF4\x90\x80\x80", "\xF5\x80\x80\x80"}},
      {kBQStringEncodingASCII, "not 7 bits", {"abc\x80"}},
      {kBQStringEncodingUTF16, "odd length", {"\xFE\xFF\0"sv}},
      {kBQStringEncodingUTF16BE, "high surrogate alone", {"\xD8\x3D"sv, "\xD8\x3D\0A"sv}},
      {kBQStringEncodingUTF16BE, "low surrogate alone, odd length", {"\xDE\x00\0A"sv, "\0A\0"sv}},
      {kBQStringEncodingUTF16LE, "two high surrogates", {"\x3D\xD8\x3D\xD8"sv}},
      {bq::kUTF32BE, "length, surrogate", {"\0\0\0"sv, "\0\0\xD8\x3D"sv}},
      {bq::kUTF32BE, "beyond U+10FFFF", {"\0\x11\0\0"sv, "\xFF\xFF\xFF\xFF"sv}},
      {kShiftJIS, "cut short", {"\x93"}},
      {kEUCJP, "second byte out of range", {"\xC6 "}},
      {kISO2022JP, "escape and character cut short", {"\x1B$", "\x1B$BF"}},
      {kBQStringEncodingWindowsLatin1, "no character", {"\x81"}},
      {0x0999, "no such encoding", {"a"}},
      {kBQStringEncodingInvalidId, "no such encoding", {"a"}},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << test.encoding << " " << test.why);
    for (std::string_view bytes : test.rows) {
      std::string out;
      EXPECT_FALSE(decode(bytes, test.encoding, out)) << bytes;
      out.clear();
      EXPECT_FALSE(decode("0123456789abcdef" + std::string(bytes), test.encoding, out)) << bytes;
    }
  }
}

TEST(Encoding, FailureLeavesNoShiftStateBehind) {
  std::string out;
  EXPECT_FALSE(decode("\x1B$BF|F", kISO2022JP, out));
  out.clear();
  EXPECT_TRUE(decode("F|", kISO2022JP, out));
  EXPECT_EQ(out, "F|");
}

TEST(Encoding, CharactersThatTheEncodingLacks) {
  const struct {
    BQStringEncoding encoding;
    std::string_view text;
    uint8_t lossByte;
    std::string_view bytes;
  } cases[] = {
      {kBQStringEncodingASCII, "aéb😀", '?', "a?b?"},
      {kBQStringEncodingISOLatin1, "é€ÿĀ", '?', "\xE9?\xFF?"},
      {kBQStringEncodingISOLatin1, "€", 0xFF, "\xFF"},
      {kBQStringEncodingWindowsLatin1, "€日é本", '?', "\x80?\xE9?"},
      {kBQStringEncodingWindowsLatin1, "日", 0xA4, "\xA4"},
      {kShiftJIS, "日é本", '?', "\x93\xFA?\x96\x7B"},
      {kISO2022JP, "日é本", '?', "\x1B$BF|\x1B(B?\x1B$BK\\\x1B(B"},
      {kEBCDIC, "a€b", '?', "\x81\x6F\x82"},
      {kLatin9, "a\U000E0041b\U000E007F", '?', "a?b?"},
      {kBQStringEncodingASCII, "a\U000E0041b", '?', "a?b"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << test.encoding << " " << test.text);
    std::string out;
    EXPECT_FALSE(encode(test.text, test.encoding, 0, out));
    out.clear();
    EXPECT_TRUE(encode(test.text, test.encoding, test.lossByte, out));
    EXPECT_EQ(out, test.bytes) << "also right after a failure";
  }
}

TEST(Encoding, LongTextIsConvertedWhole) {
  std::string text;
  for (int count = 0; count < 20'000; ++count) text += "日本 and é ";
  for (const BQStringEncoding encoding : {kGB18030, kBQStringEncodingUTF16, kBQStringEncodingUTF8}) {
    std::string encoded;
    std::string decoded;
    EXPECT_TRUE(encode(text, encoding, 0, encoded));
    EXPECT_TRUE(decode(encoded, encoding, decoded));
    EXPECT_EQ(decoded, text);
  }
}

TEST(Encoding, WellFormednessIsFoundAtEveryOffset) {
  for (const std::string_view character : {"é"sv, "€"sv, "😀"sv}) {
    for (size_t offset = 0; offset < 40; ++offset) {
      std::string text(offset, 'a');
      text += character;
      EXPECT_TRUE(bq::isWellFormedUTF8(text.data(), text.size()));
      EXPECT_FALSE(bq::isWellFormedUTF8(text.data(), text.size() - 1)) << offset;
      text.append(40 - offset, 'b');
      EXPECT_TRUE(bq::isWellFormedUTF8(text.data(), text.size()));
      text[offset] = '\xFE';
      EXPECT_FALSE(bq::isWellFormedUTF8(text.data(), text.size())) << offset;
    }
  }
}

/* Whatever single bytes mean in an encoding, they mean it in both directions. */
TEST(Encoding, SingleBytesComeBackAndASCIISupersetsReadASCIIAsItIs) {
  for (const bq::EncodingRecord& record : bq::allEncodings()) {
    SCOPED_TRACE(record.name.bytes);
    EXPECT_TRUE(BQStringIsEncodingAvailable(record.number));
    bool isSuperset = true;
    for (int byte = 0; byte < 0x100; ++byte) {
      const std::string bytes(1, static_cast<char>(byte));
      std::string decoded;
      const bool isCharacter = decode(bytes, record.number, decoded);
      EXPECT_TRUE(bq::isWellFormedUTF8(decoded.data(), decoded.size()));
      std::string encoded;
      EXPECT_TRUE(!isCharacter || (encode(decoded, record.number, 0, encoded) && encoded == bytes)) << byte;
      std::string pair;
      isSuperset =
          isSuperset && (byte >= 0x80 || (decode(bytes + "a", record.number, pair) && pair == bytes + "a"));
    }
    EXPECT_EQ(bq::isASCIISuperset(record.number), isSuperset);
  }
  EXPECT_FALSE(bq::isASCIISuperset(0x0999));
}

BQStringEncoding encodingNamed(std::string_view name) {
  return BQStringConvertIANACharSetNameToEncoding(values::string(name).get());
}

TEST(EncodingName, IsFoundInAnySpellingAndGivenInThePreferredOne) {
  const std::tuple<const char*, BQStringEncoding, const char*> cases[] = {
      {"utf8", kBQStringEncodingUTF8, "UTF-8"},
      {"csUTF8", kBQStringEncodingUTF8, "UTF-8"},
      {"us-ascii", kBQStringEncodingASCII, "US-ASCII"},
      {"ANSI_X3.4-1968", kBQStringEncodingASCII, "US-ASCII"},
      {"ISO8859-1", kBQStringEncodingISOLatin1, "ISO-8859-1"},
      {"ISO_8859-1:1987", kBQStringEncodingISOLatin1, "ISO-8859-1"},
      {"L1", kBQStringEncodingISOLatin1, "ISO-8859-1"},
      {"Windows-1252", kBQStringEncodingWindowsLatin1, "windows-1252"},
      {"utf-16", kBQStringEncodingUTF16, "UTF-16"},
      {"UTF-16LE", kBQStringEncodingUTF16LE, "UTF-16LE"},
      {"UTF-32", kBQStringEncodingUTF32, "UTF-32"},
      {"KOI8-R", kKOI8R, "KOI8-R"},
      {"EUC-JP", kEUCJP, "EUC-JP"},
      {"GBK", 0x0421, "GBK"},
      {"macintosh", kBQStringEncodingWestern, "macintosh"},
      {"shift-jis", kShiftJIS, "Shift_JIS"},
      {"gb2312", 0x0930, "GB2312"},
      {"Big5", 0x0A03, "Big5"},
      {"KS_C_5601-1987", 0x0940, "EUC-KR"},
  };
  for (const auto& [name, encoding, preferred] : cases) {
    EXPECT_EQ(encodingNamed(name), encoding) << name;
    EXPECT_EQ(values::text(BQStringConvertEncodingToIANACharSetName(encoding)), preferred);
  }
}

TEST(EncodingName, UnknownNamesAndNumbers) {
  const std::string veryLong(1 << 20, 'u');
  for (const std::string_view name :
       {""sv, "-"sv, "utf"sv, "utf-9"sv, "UTF-8 "sv, "utf-8\0"sv, "utf-7"sv, std::string_view(veryLong)}) {
    EXPECT_EQ(encodingNamed(name), kBQStringEncodingInvalidId) << name.substr(0, 20);
  }
  EXPECT_EQ(BQStringConvertIANACharSetNameToEncoding(nullptr), kBQStringEncodingInvalidId);
  for (const BQStringEncoding number : {0x0999u, 0x020Cu, kBQStringEncodingInvalidId}) {
    EXPECT_EQ(BQStringConvertEncodingToIANACharSetName(number), nullptr);
    EXPECT_FALSE(BQStringIsEncodingAvailable(number));
  }
}

TEST(EncodingName, EveryNameMeansItsOwnEncoding) {
  std::map<std::string, BQStringEncoding> names;
  for (const bq::EncodingRecord& record : bq::allEncodings()) {
    EXPECT_EQ(encodingNamed(record.name.bytes), record.number) << record.name.bytes;
    std::string aliases = record.aliases;
    for (size_t start = 0; start < aliases.size();) {
      const size_t end = std::min(aliases.find(' ', start), aliases.size());
      const std::string alias = aliases.substr(start, end - start);
      EXPECT_EQ(encodingNamed(alias), record.number) << alias;
      EXPECT_TRUE(names.emplace(alias, record.number).second) << "twice: " << alias;
      start = end + 1;
    }
  }
}

}  // namespace
