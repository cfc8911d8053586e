#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cstdint>
#include <string>

#include "support/PlatformValues.h"

/* The C library loses the list of folders that it makes of LOCPATH. Called by the sanitizer, if it is there.
 */
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:__argz_add_sep\n";
}

namespace {

using namespace values;
using namespace std::string_literals;

template <class... Arguments>
std::string format(std::string_view format, Arguments... arguments) {
  return text(own(BQStringCreateWithFormat(string(format).get(), arguments...)));
}

TEST(Format, ConvertsLikePrintf) {
  const char* kNoText = nullptr;
  const std::pair<std::string, std::string> kRows[] = {
      {format(""), ""},
      {format("100%%"), "100%"},
      {format("%d|%i|%u", INT_MIN, -1, UINT_MAX), "-2147483648|-1|4294967295"},
      {format("%4.4u|%-6d|%+d|% d|%06d", 42u, 42, 42, 42, -42), "0042|42    |+42| 42|-00042"},
      {format("%x|%X|%#x|%o|%#o", 255, 255, 255, 8, 8), "ff|FF|0xff|10|010"},
      {format("%hhd|%hd|%hhu", 300, 70000, 511), "44|4464|255"},
      {format("%ld|%lld|%qd|%lu", LONG_MIN, LLONG_MAX, 5LL, ULONG_MAX),
       "-9223372036854775808|9223372036854775807|5|18446744073709551615"},
      {format("%jd|%zd|%zu|%td", INTMAX_MIN, ssize_t{-3}, SIZE_MAX, ptrdiff_t{-4}),
       "-9223372036854775808|-3|18446744073709551615|-4"},
      {format("%.8g|%g|%G|%e|%.0f|%10.3f|%-8.1f|", 0.1, 1e-10, 1e-10, 12345.678, 2.5, 3.14159, 2.25),
       "0.1|1e-10|1E-10|1.234568e+04|2|     3.142|2.2     |"},
      {format("%f|%F|%a", 1e15, 0.5, 1.0), "1000000000000000.000000|0.500000|0x1p+0"},
      {format("%.2Lf|%Lg", 1.005L, 1e-5L), "1.00|1e-05"},
      {format("%*d|%-*d|%.*f|%*.*f", 5, 42, 5, 42, 2, 3.14159, 7, 1, 2.71828), "   42|42   |3.14|    2.7"},
      {format("%s|%10s|%-4s|%.2s|%.*s", "text", "right", "l", "cut", 3, "starred"),
       "text|     right|l   |cu|sta"},
      {format("%c%c", 'a', '\0'), "a\0"s},
      {format("%.3d|%+.2e", 5, 0.0), "005|+0.00e+00"},
      {format("%s|%p|%p", kNoText, static_cast<void*>(nullptr), reinterpret_cast<void*>(0x1234)),
       "(null)|(nil)|0x1234"},
      /* Percent signs in arguments are text. */
      {format("%@|%s|%@", BQSTR("%d%n%@"), "%s%%", array({BQSTR("%x")}).get()), "%d%n%@|%s%%|[\"%x\"]"},
      {format("[%@] %d %@", static_cast<BQTypeRef>(nullptr), 7, kBQBooleanTrue), "[(null)] 7 true"},
      /* Malformed bytes are replaced. */
      {format("%s|%c", "a\xFFz", 0xE9), "a\uFFFDz|\uFFFD"},
      {format("\xE2\x82\xAC%.2s|", "\xE2\x82\xAC"), "\u20AC\uFFFD\uFFFD|"},
      /* Wide text does not depend on the locale. */
      {format("%ls|%S|%lc%C", L"plain", L"\u20ACuro", wint_t{0x20AC}, wint_t{L'x'}),
       "plain|\u20ACuro|\u20ACx"},
      {format("%.4ls|%6ls", L"\u20AC\u20AC", L"\u20AC"), "\u20AC|   \u20AC"},
  };
  for (const auto& [actual, expected] : kRows) EXPECT_EQ(actual, expected);
}

TEST(Format, LongResultsAreWhole) {
  for (size_t length : {126u, 127u, 128u, 129u, 5000u}) {
    std::string argument(length, 'x');
    EXPECT_EQ(format("<%s>", argument.c_str()), "<" + argument + ">");
    EXPECT_EQ(format("%*d", static_cast<int>(length), 7), std::string(length - 1, ' ') + "7");
  }
}

TEST(Format, TargetMayBeInsideTheObject) {
  auto target = mutableString("target");
  auto holder = array({target.get(), target.get()});
  BQStringAppendFormat(target.get(), BQSTR(" %@"), holder.get());
  EXPECT_EQ(text(target), "target [\"target \", \"target \"]");
}

TEST(Format, WhatIsNoConversionStaysText) {
  for (const std::string& row : {"%"s, "50%"s, "%5"s, "%-"s, "%l"s, "% y"s, "%\xC3\xA9"s, "%5.2"s, "%1$d"s,
                                 "a%\0b"s, "%" + std::string(100, '1') + "d"}) {
    EXPECT_EQ(format(row, 1), row);
  }
}

TEST(Format, CountsAreNotWritten) {
  int count = 77;
  long longCount = 77;
  EXPECT_EQ(format("ab%n|%ln|%5hhn|%d", &count, &longCount, &count, 5), "ab%n|%ln|%5hhn|5");
  EXPECT_EQ(count, 77);
  EXPECT_EQ(longCount, 77);
}

TEST(Format, NumbersDoNotFollowTheLocale) {
  const std::string folder = testing::TempDir() + "/orvane-locales";
  const std::string define =
      "mkdir -p " + folder + " && localedef -i de_DE -f UTF-8 " + folder + "/de_DE.UTF-8";
  ASSERT_EQ(std::system(define.c_str()), 0) << "Debian's package locales has what this needs";
  setenv("LOCPATH", folder.c_str(), 1);
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
  EXPECT_EQ(format("%.1f|%'d|%Lg", 1.5, 1234567, 2.5L), "1.5|1234567|2.5");
  EXPECT_EQ(BQStringGetDoubleValue(BQSTR("2.5")), 2.5);
  EXPECT_EQ(describe(real(0.5).get()), "0.5");
  std::setlocale(LC_ALL, "C");
}

}  // namespace
