#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "support/PlatformValues.h"

namespace {

using namespace values;
using namespace std::string_literals;

constexpr BQIndex kHuge = std::numeric_limits<BQIndex>::max();

TEST(MutableString, GrowsFromAnyCapacity) {
  for (BQIndex capacity : {BQIndex{0}, BQIndex{-1}, BQIndex{1}, BQIndex{1000}, kHuge, -kHuge}) {
    auto string = own(BQStringCreateMutable(capacity));
    std::string expected;
    for (int i = 0; i < 100; ++i) {
      BQStringAppend(string.get(), BQSTR("piece "));
      expected += "piece ";
    }
    EXPECT_EQ(text(string), expected) << capacity;
    EXPECT_EQ(std::strlen(BQStringGetUTF8Ptr(string.get())), expected.size()) << capacity;
  }
}

TEST(MutableString, CanBeAppendedToItself) {
  auto string = mutableString("ab");
  std::string expected = "ab";
  for (int i = 0; i < 12; ++i) {
    switch (i % 3) {
      case 0:
        BQStringAppend(string.get(), string.get());
        expected += expected;
        break;
      case 1:
        BQStringAppendUTF8(string.get(), BQStringGetUTF8Ptr(string.get()), BQStringGetLength(string.get()));
        expected += expected;
        break;
      default:
        BQStringAppendFormat(string.get(), BQSTR("%@-"), string.get());
        expected += expected + "-";
    }
    ASSERT_EQ(text(string), expected);
  }
}

TEST(MutableString, CanBeItsOwnFormat) {
  const std::string filler(40, 'x');
  auto string = mutableString("%d" + filler + "%d");
  BQStringAppendFormat(string.get(), string.get(), 12345, 67890);
  EXPECT_EQ(text(string), "%d" + filler + "%d" + "12345" + filler + "67890");
}

TEST(MutableString, MalformedBytesAreReplacedOneByOne) {
  const std::pair<std::string, std::string> kRows[] = {{"\xFFz", "\uFFFDz"},
                                                       {"\xE2\x82", "\uFFFD\uFFFD"},
                                                       {"a\xED\xA0\x80z", "a\uFFFD\uFFFD\uFFFDz"},
                                                       {"\xC3\xA9\xC3", "\xC3\xA9\uFFFD"},
                                                       {"\0\xC0\0"s, "\0\uFFFD\0"s}};
  for (const auto& [bytes, expected] : kRows) {
    auto string = mutableString(">");
    BQStringAppendUTF8(string.get(), bytes.data(), static_cast<BQIndex>(bytes.size()));
    EXPECT_EQ(text(string), ">" + expected);
  }
}

TEST(MutableString, ImmutableStringsAndNonsenseAreLeftAlone) {
  auto immutable = string("text");
  auto* forced = const_cast<BQString*>(immutable.get());
  auto target = mutableString("text");
  auto* stranger = reinterpret_cast<BQString*>(const_cast<BQNull*>(kBQNull));
  for (BQString* string : {forced, static_cast<BQString*>(nullptr), stranger}) {
    BQStringAppend(string, BQSTR("x"));
    BQStringAppendUTF8(string, "x", 1);
    BQStringAppendFormat(string, BQSTR("x"));
    BQStringTruncate(string, 0);
    BQStringTrimWhitespace(string);
    BQStringCommitUTF8(string, 0);
    EXPECT_EQ(BQStringReserveUTF8(string, 1), nullptr);
    EXPECT_EQ(BQStringFindAndReplace(string, BQSTR("t"), BQSTR("x"), BQRangeMake(0, 4), kBQCompareExact), 0);
  }
  BQStringAppend(target.get(), nullptr);
  BQStringAppend(target.get(), stranger);
  BQStringAppendUTF8(target.get(), nullptr, 5);
  BQStringAppendUTF8(target.get(), "x", -1);
  BQStringAppendFormat(target.get(), nullptr);
  BQStringCommitUTF8(target.get(), -1);
  BQStringCommitUTF8(target.get(), kHuge);
  EXPECT_EQ(BQStringReserveUTF8(target.get(), -1), nullptr);
  EXPECT_EQ(text(target), "text");
  EXPECT_EQ(text(immutable), "text");
}

TEST(MutableString, ReservedRoomBecomesText) {
  auto string = mutableString("a");
  char* room = BQStringReserveUTF8(string.get(), 1000);
  std::memset(room, 'b', 1000);
  EXPECT_EQ(text(string), "a");
  BQStringCommitUTF8(string.get(), 2);
  EXPECT_EQ(text(string), "abb");
  EXPECT_STREQ(BQStringGetUTF8Ptr(string.get()), "abb");
  ASSERT_NE(BQStringReserveUTF8(string.get(), 0), nullptr);
}

TEST(MutableString, TruncatesBetweenCharacters) {
  auto string = mutableString("a\xC3\xA9z");
  for (const auto& [asked, left] :
       {std::pair<BQIndex, BQIndex>{-1, 4}, {2, 4}, {5, 4}, {kHuge, 4}, {3, 3}, {2, 3}, {1, 1}, {0, 0}}) {
    BQStringTruncate(string.get(), asked);
    EXPECT_EQ(BQStringGetLength(string.get()), left) << asked;
    EXPECT_EQ(BQStringGetUTF8Ptr(string.get())[left], '\0');
  }
}

TEST(MutableString, ReplacesInRangesFromLeftToRight) {
  const struct {
    const char *string, *text, *replacement;
    BQRange range;
    BQStringCompareOptions options;
    BQIndex count;
    const char* expected;
  } kRows[] = {
      {"aaa", "aa", "a", {0, 3}, kBQCompareExact, 1, "aa"},
      {"aaaa", "a", "aa", {0, 4}, kBQCompareExact, 4, "aaaaaaaa"},
      {"<&<", "<", "&lt;", {0, 3}, kBQCompareExact, 2, "&lt;&&lt;"},
      {"abcabc", "abc", "", {0, 6}, kBQCompareExact, 2, ""},
      {"xAbxaB", "ab", "-", {0, 6}, kBQCompareCaseInsensitive, 2, "x-x-"},
      {"ababab", "ab", "-", {2, 2}, kBQCompareExact, 1, "ab-ab"},
      {"abab", "ab", "-", {0, 3}, kBQCompareExact, 1, "-ab"},
      {"abab", "", "-", {0, 4}, kBQCompareExact, 0, "abab"},
      {"abab", "ab", "-", {0, 5}, kBQCompareExact, 0, "abab"},
      {"abab", "ab", "-", {-1, 4}, kBQCompareExact, 0, "abab"},
      {"\xC3\xA9\xC3\xA9", "\xC3\xA9", "e", {1, 3}, kBQCompareExact, 0, "\xC3\xA9\xC3\xA9"},
  };
  for (const auto& row : kRows) {
    auto string = mutableString(row.string);
    EXPECT_EQ(BQStringFindAndReplace(string.get(), values::string(row.text).get(),
                                     values::string(row.replacement).get(), row.range, row.options),
              row.count)
        << row.string;
    EXPECT_EQ(text(string), row.expected);
  }
}

TEST(MutableString, MayBeSearchedForOrReplacedByItself) {
  auto string = mutableString("ab");
  const auto replace = [&string](const BQString* text, const BQString* replacement, BQIndex length) {
    return BQStringFindAndReplace(string.get(), text, replacement, {0, length}, kBQCompareExact);
  };
  EXPECT_EQ(replace(BQSTR("b"), string.get(), 2), 1);
  EXPECT_EQ(text(string), "aab");
  EXPECT_EQ(replace(string.get(), BQSTR("x"), 3), 1);
  EXPECT_EQ(text(string), "x");
}

TEST(MutableString, TrimsWhiteSpaceAtBothEnds) {
  const std::pair<std::string, std::string> kRows[] = {
      {" \t\r\n\v\fa b \n", "a b"}, {"", ""}, {" \n ", ""}, {"a", "a"}, {"\u00A0x\u00A0", "\u00A0x\u00A0"}};
  for (const auto& [given, expected] : kRows) {
    auto string = mutableString(given);
    BQStringTrimWhitespace(string.get());
    EXPECT_EQ(text(string), expected);
  }
}

}  // namespace
