#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

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

/* No NUL follows the bytes: reading on is an error of memory. */
TEST(String, OfBorrowedBytesEndsWithNulAndIsCopied) {
  const auto bytes = std::make_unique<char[]>(5);
  std::memcpy(bytes.get(), "bytes", 5);
  auto view = own(BQStringCreateWithBytesNoCopy(bytes.get(), 5, kBQStringEncodingASCII));
  auto copy = own(BQStringCreateCopy(view.get()));
  EXPECT_STREQ(BQStringGetUTF8Ptr(view.get()), "bytes");
  EXPECT_EQ(BQStringGetUTF8Ptr(view.get()), BQStringGetUTF8Ptr(view.get()));
  bytes[0] = '#';
  EXPECT_TRUE(BQEqual(copy.get(), BQSTR("bytes")) && BQEqual(view.get(), BQSTR("#ytes")));
  EXPECT_EQ(own(BQStringCreateCopy(copy.get())).get(), copy.get()) << "shared";
}

/* An earlier version searched the whole rest for the other case of a letter at each position. */
TEST(String, SearchWithoutCaseTakesTimeInProportion) {
  auto upper = string(std::string(4 << 20, 'A'));
  EXPECT_FALSE(BQStringFind(upper.get(), BQSTR("ax"), {0, 4 << 20}, kBQCompareCaseInsensitive, nullptr));
}

TEST(String, ReadsTheNumberAtTheStart) {
  const std::pair<double, std::vector<std::string>> kRows[] = {
      {12.5, {"12.5", "\v\f\t\r\n 12.5"}},
      {7, {"+7z"}},
      {-0.5, {"-.5"}},
      {1, {"1.", "1e", "1e+", "1,5", "1\0002"s}},
      {0, {"", " ", "abc", ".", "-", "+-1", "0x1A", "1e-400", "information", "nancy", "inf1"}},
      {5e-324, {"5e-324"}},
      {INFINITY, {"1e400", "Infinity"}},
      {-INFINITY, {"-1e400", "-INF"}},
  };
  for (const auto& [value, texts] : kRows) {
    for (const std::string& text : texts)
      EXPECT_EQ(BQStringGetDoubleValue(string(text).get()), value) << text;
  }
  EXPECT_TRUE(std::isnan(BQStringGetDoubleValue(BQSTR("NaN"))));
  EXPECT_TRUE(std::signbit(BQStringGetDoubleValue(BQSTR("-0"))));
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
      /* Wide text does not depend on the locale. */
      {format("%S|%lc%C|%6ls", L"€uro", wint_t{0x20AC}, wint_t{L'x'}, L"€"), "€uro|€x|   €"},
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

TEST(Format, TargetMayBeTheFormatAndInsideTheObject) {
  const std::string filler(40, 'x');
  auto target = mutableString("%d" + filler);
  BQStringAppendFormat(target.get(), target.get(), 12345);
  EXPECT_EQ(text(target), "%d" + filler + "12345" + filler);
  BQStringTruncate(target.get(), 2);
  BQStringAppendFormat(target.get(), BQSTR(" %@"), array({target.get(), target.get()}).get());
  EXPECT_EQ(text(target), "%d [\"%d \", \"%d \"]");
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
