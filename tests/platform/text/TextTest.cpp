#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <vector>

#include "platform/text/Encoding.h"
#include "platform/text/EncodingTable.h"
#include "platform/text/EncodingUTF16.h"
#include "support/PlatformValues.h"

/* The C library loses the list of directories that it makes of LOCPATH. Called by the sanitizer, if it is
 * there. */
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:__argz_add_sep\n";
}

#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

namespace {

using namespace values;
using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr BQStringEncoding kShiftJIS = 0x0A01, kEUCJP = 0x0920, kISO2022JP = 0x0820;
constexpr BQStringEncoding kLatin9 = 0x020F, kVietnamese = 0x0508, kUnknown = 0x0999, kUTF32BE = bq::kUTF32BE;

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
  const Row kRows[] = {{kBQStringEncodingUTF8, "a\0\u07FF\u0800\uFFFF\U0010FFFF"sv,
                        "a\0\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF"sv},
                       {kBQStringEncodingISOLatin1, "0123456789abcdefé\0ÿ\u0080 end"sv,
                        "0123456789abcdef\xE9\0\xFF\x80 end"sv},
                       /* Only the first is a mark. */
                       {kBQStringEncodingUTF16, "€\uD7FF\uE000\U0010FFFF\uFEFF",
                        "\xFE\xFF\x20\xAC\xD7\xFF\xE0\0\xDB\xFF\xDF\xFF\xFE\xFF"sv},
                       {kBQStringEncodingUTF16, "€", "\xFF\xFE\xAC\x20", false},
                       {kBQStringEncodingUTF16, "€", "\x20\xAC", false},
                       {kBQStringEncodingUTF16, "", "", false},
                       {kBQStringEncodingUTF16LE, "A€😀", "A\0\xAC\x20\x3D\xD8\x00\xDE"sv},
                       {kBQStringEncodingUTF32, "A😀", "\0\0\xFE\xFF\0\0\0A\0\1\xF6\0"sv},
                       {kBQStringEncodingUTF32, "A", "\xFF\xFE\0\0A\0\0\0"sv, false},
                       {kUTF32BE, "\uD7FF\U0010FFFF", "\0\0\xD7\xFF\0\x10\xFF\xFF"sv},
                       {kShiftJIS, "日本\\~ｱ", "\x93\xFA\x96\x7B\\~\xB1"},
                       {kISO2022JP, "a日本b", "a\x1B$BF|K\\\x1B(Bb"},
                       {kVietnamese, "\u00E9", "e\xEC", false}}; /* a base letter waits for its accent */
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
      {kBQStringEncodingUTF16BE,
       {"\0A\0"sv, "\xD8\x3D", "\xD8\x3D\0A"sv, "\xD8\0\xE0\0"sv, "\xDC\x00\0A"sv, "\xDF\xFF"}},
      {kUTF32BE, {"\0\0\0"sv, "\0\0\xD8\0"sv, "\0\0\xDF\xFF"sv, "\0\x11\0\0"sv}},
      {kBQStringEncodingUTF16, {"\xFE\xFF\0"sv}},
      {kShiftJIS, {"\x93"}},
      {kEUCJP, {"\xC6 "}},
      {kISO2022JP, {"\x1B$", "\x1B$BF"}},
      {kBQStringEncodingASCII, {"\x80"}},
      {kBQStringEncodingWindowsLatin1, {"\x81"}},
      {kUnknown, {"a"}}};
  for (const auto& [encoding, rows] : kRows) {
    for (std::string_view bytes : rows) {
      for (size_t offset = 0; offset < 48; offset += encoding == kBQStringEncodingUTF8 ? 1 : 4)
        EXPECT_EQ(decode(std::string(offset, 'a') + std::string(bytes), encoding), "(none)") << offset;
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
      "csUTF8 08000100 us-ascii 600 ANSI_X3.4-1968 600 ISO_8859-1:1987 201 L1 201 Windows-1252 500 utf-16 "
      "100 "
      "UTF-16LE 14000100 UTF-32 0C000100 macintosh 0 KOI8-R A02 EUC-JP 920 GBK 421 shift-jis A01 Big5 A03");
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

/* No NUL follows the bytes: reading on is an error of memory. */
TEST(String, OfBorrowedBytesEndsWithNulAndIsCopied) {
  std::vector<char> bytes = {'b', 'y', 't', 'e', 's'};
  auto view = own(BQStringCreateWithBytesNoCopy(bytes.data(), 5, kBQStringEncodingASCII));
  auto copy = own(BQStringCreateCopy(view.get()));
  EXPECT_STREQ(BQStringGetUTF8Ptr(view.get()), "bytes");
  EXPECT_EQ(BQStringGetUTF8Ptr(view.get()), BQStringGetUTF8Ptr(view.get()));
  bytes[0] = '#';
  EXPECT_TRUE(BQEqual(copy.get(), BQSTR("bytes")) && BQEqual(view.get(), BQSTR("#ytes")));
  EXPECT_EQ(own(BQStringCreateCopy(copy.get())).get(), copy.get()) << "shared";
}

/* Documents have the numbers whose characters XML allows. */
TEST(String, ReadsTheNumberAtTheStart) {
  EXPECT_EQ(BQStringGetDoubleValue(string("\v\f 1\0002"s).get()), 1);
}

/* The longest beginning of whole characters that converts and fits. */
TEST(String, BytesAreConvertedAsFarAsTheyFit) {
  auto string = values::string("aé€😀b");
  for (auto encoding : {kBQStringEncodingUTF8, kBQStringEncodingASCII, kBQStringEncodingISOLatin1,
                        kBQStringEncodingUTF16, kBQStringEncodingUTF32}) {
    for (BQIndex size = -1; size < 60; ++size) {
      const uint8_t lossByte = size % 2 == 0 ? '?' : 0;
      std::string expected, buffer(40, '#');
      BQIndex length = 0, used = -1;
      for (BQIndex end : {1, 3, 6, 10, 11}) {
        auto part = own(BQStringCreateSubstring(string.get(), {0, end}));
        auto data = own(BQStringCreateExternalRepresentation(part.get(), encoding, lossByte));
        if (!data || BQDataGetLength(data.get()) > size / 2) break;
        expected = bytes(data.get());
        length = end;
      }
      auto* room = reinterpret_cast<uint8_t*>(buffer.data());
      EXPECT_EQ(BQStringGetBytes(string.get(), {0, 11}, encoding, lossByte, room, size / 2, &used), length);
      EXPECT_EQ(buffer, expected + std::string(40 - used, '#')) << encoding << " " << size;
    }
  }
  EXPECT_EQ(BQStringGetBytes(string.get(), {1, 5}, kBQStringEncodingUTF16, 0, nullptr, 0, nullptr), 5)
      << "counts";
}

template <class... Arguments>
std::string format(std::string_view format, Arguments... arguments) {
  return text(own(BQStringCreateWithFormat(string(format).get(), arguments...)));
}

/* With flags, and widths and precisions of the format and of arguments; the last argument shows that none is
 * lost. */
template <class T>
void expectLikePrintf(const std::string& conversion, T argument) {
  char expected[1000];
  for (const std::string flags : {"%", "%-", "%+", "% ", "%#", "%0"}) {
    for (const char* numbers : {"", "8", "150", ".0", "12.5"}) {
      const std::string row = flags + numbers + conversion + "|%d";
      std::snprintf(expected, sizeof expected, row.c_str(), argument, 5);
      EXPECT_EQ(format(row, argument, 5), expected) << row;
    }
    const std::string row = flags + "*" + conversion + "|" + flags + "*.*" + conversion + "|%d";
    std::snprintf(expected, sizeof expected, row.c_str(), 20, argument, 9, 3, argument, 5);
    EXPECT_EQ(format(row, 20, argument, 9, 3, argument, 5), expected) << row;
  }
}

TEST(Format, ConvertsLikePrintf) {
  for (const char* kind : {"d", "i", "o", "u", "x", "X"}) {
    for (int64_t number : {int64_t{-1}, int64_t{300}, INT64_MIN + 5}) {
      for (std::string length : {"", "h", "hh"}) expectLikePrintf(length + kind, static_cast<int>(number));
      for (std::string length : {"l", "ll", "q", "j", "z", "t", "L"}) expectLikePrintf(length + kind, number);
    }
  }
  for (const char* kind : {"a", "A", "e", "E", "f", "F", "g", "G"}) {
    for (double number : {0.1, 12345.678, -1e300}) {
      expectLikePrintf(kind, number);
      expectLikePrintf(std::string("L") + kind, static_cast<long double>(number) / 3);
    }
  }
  for (size_t length : {0u, 5u, 126u, 127u, 128u, 129u})
    expectLikePrintf("s", std::string(length, 'x').c_str());
  expectLikePrintf("c", 'c');
  expectLikePrintf("p", "");
  errno = ENOENT;
  expectLikePrintf("m", 0);
}

TEST(Format, PrintsWhatPrintfDoesNot) {
  const char* kNoText = nullptr;
  int count = 77;
  const std::pair<std::string, std::string> kRows[] = {
      {format("100%%|%s|%c", kNoText, '\0'), "100%|(null)|\0"s},
      /* Percent signs in arguments are text. */
      {format("%@|%s|%@", BQSTR("%d%n%@"), "%s%%", array({BQSTR("%x")}).get()), "%d%n%@|%s%%|[\"%x\"]"},
      {format("[%@] %d %@", static_cast<BQTypeRef>(nullptr), 7, kBQBooleanTrue), "[(null)] 7 true"},
      /* Malformed bytes are replaced. */
      {format("€%s|%c|%.2s|", "a\xFFz", 0xE9, "€"), "€a\uFFFDz|\uFFFD|\uFFFD\uFFFD|"},
      /* Counts are not written. */
      {format("ab%n|%5hhn|%d", &count, &count, 5), "ab%n|%5hhn|5"},
  };
  for (const auto& [actual, expected] : kRows) EXPECT_EQ(actual, expected);
  EXPECT_EQ(count, 77);
  for (const std::string& row : {"%"s, "50%"s, "%5"s, "%l"s, "% y"s, "%é"s, "%1$d"s, "%***d"s, "a%\0b"s,
                                 "%" + std::string(62, '1') + "d"}) {
    EXPECT_EQ(format(row, 1), row) << "no conversion";
  }
}

TEST(Format, NumbersDoNotFollowTheLocale) {
  const std::string directory = testing::TempDir() + "/orvane-locale", source = directory + "/source";
  std::filesystem::create_directories(directory);
  std::ofstream(source)
      << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3\nEND LC_NUMERIC\n";
  /* Its status reports the categories that are missing. */
  std::system(
      ("localedef -c -i " + source + " -f ANSI_X3.4-1968 " + directory + "/comma 2>&1 | tail -1").c_str());
  setenv("LOCPATH", directory.c_str(), 1);
  ASSERT_NE(std::setlocale(LC_NUMERIC, "comma"), nullptr) << "Debian's package locales has what this needs";
  EXPECT_EQ(format("%.1f|%'d|%Lg", 1.5, 1234567, 2.5L), "1.5|1234567|2.5");
  EXPECT_EQ(BQStringGetDoubleValue(BQSTR("2.5e400")), INFINITY);
  EXPECT_EQ(describe(real(0.5).get()), "0.5");
  std::setlocale(LC_NUMERIC, "C");
}

}  // namespace
