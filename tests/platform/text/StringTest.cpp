#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "support/PlatformValues.h"

namespace {

using namespace values;
using namespace std::string_literals;

constexpr BQIndex kHuge = std::numeric_limits<BQIndex>::max();
constexpr BQIndex kLowest = std::numeric_limits<BQIndex>::min();

const BQString* stranger() {
  return reinterpret_cast<const BQString*>(kBQNull);
}

BQRange whole(const BQString* string) {
  return BQRangeMake(0, BQStringGetLength(string));
}

TEST(String, NonsenseIsAnswered) {
  auto format = [](const BQString* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const BQString* result = BQStringCreateWithFormatAndArguments(format, arguments);
    va_end(arguments);
    return result;
  };
  EXPECT_EQ(BQStringCreateWithUTF8("x", -1), nullptr);
  EXPECT_EQ(BQStringCreateWithUTF8("x", kLowest), nullptr);
  EXPECT_EQ(BQStringCreateWithUTF8(nullptr, 1), nullptr);
  EXPECT_EQ(text(own(BQStringCreateWithUTF8(nullptr, 0))), "");
  EXPECT_EQ(text(own(BQStringCreateWithBytesNoCopy(nullptr, 0, kBQStringEncodingUTF8))), "");
  EXPECT_EQ(BQStringCreateWithBytesNoCopy(nullptr, 1, kBQStringEncodingUTF8), nullptr);
  EXPECT_EQ(BQStringCreateWithBytesNoCopy("x", -1, kBQStringEncodingUTF8), nullptr);
  EXPECT_EQ(BQStringCreateWithBytes("x", 1, 0x7FFFFFFF), nullptr);
  EXPECT_EQ(BQStringCreateWithCString(nullptr, kBQStringEncodingUTF8), nullptr);
  for (const BQString* none : {static_cast<const BQString*>(nullptr), stranger()}) {
    BQRange found = {-7, -7};
    BQIndex used = 9;
    EXPECT_EQ(BQStringGetLength(none), 0);
    EXPECT_EQ(BQStringGetUTF8Ptr(none), nullptr);
    EXPECT_EQ(BQStringCreateCopy(none), nullptr);
    EXPECT_EQ(BQStringCreateMutableCopy(none), nullptr);
    EXPECT_EQ(BQStringCreateSubstring(none, BQRangeMake(0, 0)), nullptr);
    EXPECT_EQ(BQStringCreateExternalRepresentation(none, kBQStringEncodingUTF8, '?'), nullptr);
    EXPECT_EQ(BQStringGetBytes(none, BQRangeMake(0, 0), kBQStringEncodingUTF8, 0, nullptr, 0, &used), 0);
    EXPECT_EQ(used, 0);
    EXPECT_EQ(BQStringGetDoubleValue(none), 0);
    EXPECT_EQ(format(none), nullptr);
    EXPECT_EQ(BQStringCompare(none, BQSTR(""), kBQCompareExact), kBQCompareLessThan);
    EXPECT_EQ(BQStringCompare(BQSTR(""), none, kBQCompareExact), kBQCompareGreaterThan);
    EXPECT_EQ(BQStringCompare(none, nullptr, kBQCompareExact), kBQCompareEqualTo);
    EXPECT_FALSE(BQStringEqualsIgnoringCase(none, none));
    EXPECT_FALSE(BQStringHasPrefix(none, BQSTR("")));
    EXPECT_FALSE(BQStringHasSuffix(BQSTR("x"), none));
    EXPECT_FALSE(BQStringFind(BQSTR("x"), none, BQRangeMake(0, 1), kBQCompareExact, &found));
    EXPECT_FALSE(BQStringFind(none, BQSTR("x"), BQRangeMake(0, 1), kBQCompareExact, &found));
    EXPECT_EQ(found.location, -7);
  }
  EXPECT_EQ(BQStringCreateFromExternalRepresentation(nullptr, kBQStringEncodingUTF8), nullptr);
}

TEST(String, RangesOutOfBoundsOrInsideACharacterAreRefused) {
  auto string = values::string("a\xC3\xA9z"); /* a, two bytes, z */
  const struct {
    BQRange range;
    const char* expected;
  } kRows[] = {{{0, 4}, "a\xC3\xA9z"}, {{1, 2}, "\xC3\xA9"},      {{4, 0}, ""},
               {{0, 0}, ""},           {{0, 5}, nullptr},         {{5, 0}, nullptr},
               {{0, 2}, nullptr},      {{2, 2}, nullptr},         {{2, 0}, nullptr},
               {{-1, 1}, nullptr},     {{0, -1}, nullptr},        {{4, kHuge}, nullptr},
               {{kHuge, 1}, nullptr},  {{kHuge, kHuge}, nullptr}, {{kLowest, 4}, nullptr}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.range.location << "+" << row.range.length);
    auto part = own(BQStringCreateSubstring(string.get(), row.range));
    EXPECT_EQ(text(part), row.expected == nullptr ? "(none)" : row.expected);
    BQIndex used = -1;
    BQIndex read = BQStringGetBytes(string.get(), row.range, kBQStringEncodingUTF8, 0, nullptr, 0, &used);
    EXPECT_EQ(read, row.expected == nullptr ? 0 : row.range.length);
    EXPECT_EQ(used, read);
  }
}

TEST(String, CopiesAreSharedUnlessTheBytesCouldChange) {
  auto immutable = string("text");
  EXPECT_EQ(own(BQStringCreateCopy(immutable.get())).get(), immutable.get());
  char bytes[] = "bytes";
  auto view = own(BQStringCreateWithBytesNoCopy(bytes, 5, kBQStringEncodingUTF8));
  auto kept = own(BQStringCreateCopy(view.get()));
  auto changing = mutableString("text");
  auto frozen = own(BQStringCreateCopy(changing.get()));
  std::memset(bytes, '#', 5);
  BQStringAppend(changing.get(), BQSTR("!"));
  EXPECT_EQ(text(kept), "bytes");
  EXPECT_EQ(text(frozen), "text");
  EXPECT_EQ(text(changing), "text!");
}

TEST(String, TextOfBorrowedBytesEndsWithNul) {
  /* Nothing stands behind the bytes: reading on is an error of memory. */
  auto bytes = std::make_unique<char[]>(5);
  std::memcpy(bytes.get(), "bytes", 5);
  auto view = own(BQStringCreateWithBytesNoCopy(bytes.get(), 5, kBQStringEncodingASCII));
  const char* pointer = BQStringGetUTF8Ptr(view.get());
  EXPECT_STREQ(pointer, "bytes");
  EXPECT_EQ(BQStringGetUTF8Ptr(view.get()), pointer);
  EXPECT_TRUE(BQEqual(view.get(), BQSTR("bytes")));
}

TEST(String, EqualityAndHashGoByContent) {
  const Value kSame[] = {string("text"), mutableString("text"), Value::retain(BQSTR("text")),
                         own(BQStringCreateWithBytesNoCopy("text", 4, kBQStringEncodingUTF8))};
  for (const Value& left : kSame) {
    for (const Value& right : kSame) {
      EXPECT_TRUE(BQEqual(left.get(), right.get()));
      EXPECT_EQ(BQHash(left.get()), BQHash(right.get()));
    }
  }
  EXPECT_FALSE(BQEqual(BQSTR("text"), BQSTR("Text")));
  EXPECT_FALSE(BQEqual(BQSTR("nul"), string("nul\0"s).get()));
  EXPECT_FALSE(BQEqual(BQSTR("text"), kBQNull));
}

TEST(String, ComparesByCodePoint) {
  const char* kAscending[] = {"", "A", "B", "a", "aa", "b", "\xC3\xA9", "\xEF\xBF\xBD", "\xF0\x9F\x98\x80"};
  for (const char*& left : kAscending) {
    for (const char*& right : kAscending) {
      const int expected = &left < &right ? -1 : &left > &right ? 1 : 0;
      EXPECT_EQ(BQStringCompare(string(left).get(), string(right).get(), kBQCompareExact), expected)
          << left << " " << right;
    }
  }
}

TEST(String, CaseInsensitiveComparisonFoldsASCIIOnly) {
  const struct {
    const char *left, *right;
    int order;
  } kRows[] = {{"Content-Type", "content-TYPE", 0}, {"abc", "ABD", -1}, {"B", "a", 1},  {"a", "aB", -1},
               {"\xC3\xA9", "\xC3\x89", 1},         {"[", "{", -1},     {"@", "`", -1}, {"Z", "[", 1}};
  for (const auto& row : kRows) {
    auto left = string(row.left), right = string(row.right);
    EXPECT_EQ(BQStringCompare(left.get(), right.get(), kBQCompareCaseInsensitive), row.order) << row.left;
    EXPECT_EQ(BQStringEqualsIgnoringCase(left.get(), right.get()), row.order == 0) << row.left;
  }
}

TEST(String, FindsTextInRanges) {
  constexpr auto kExact = kBQCompareExact, kBack = kBQCompareBackwards, kNoCase = kBQCompareCaseInsensitive;
  constexpr auto kBackNoCase = static_cast<BQStringCompareOptions>(kBack | kNoCase);
  const struct {
    const char *string, *text;
    BQRange range;
    BQStringCompareOptions options;
    BQIndex location;
  } kRows[] = {
      {"abcabc", "bc", {0, 6}, kExact, 1},     {"abcabc", "bc", {2, 4}, kExact, 4},
      {"abcabc", "bc", {0, 6}, kBack, 4},      {"abcabc", "bc", {0, 5}, kBack, 1},
      {"abcabc", "bc", {0, 2}, kExact, -1},    {"abcabc", "BC", {0, 6}, kExact, -1},
      {"abcabc", "BC", {0, 6}, kNoCase, 1},    {"aBcAbC", "bc", {0, 6}, kBackNoCase, 4},
      {"AAAAaB", "ab", {0, 6}, kNoCase, 4},    {"aaaaAB", "ab", {0, 6}, kNoCase, 4},
      {"abc", "", {0, 3}, kExact, -1},         {"abc", "abcd", {0, 3}, kBack, -1},
      {"abc", "abc", {0, 3}, kBack, 0},        {"abc", "c", {0, 4}, kExact, -1},
      {"abc", "c", {-1, 3}, kExact, -1},       {"abc", "c", {3, 0}, kBack, -1},
      {"a\xC3\xA9z", "z", {2, 2}, kExact, -1}, {"a\xC3\xA9z", "\xC3\xA9", {0, 4}, kBack, 1},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.string << " " << row.text << " " << row.options);
    BQRange found = {-1, -1};
    bool isFound =
        BQStringFind(string(row.string).get(), string(row.text).get(), row.range, row.options, &found);
    EXPECT_EQ(isFound, row.location >= 0);
    EXPECT_EQ(found.location, row.location);
    EXPECT_EQ(found.length, isFound ? static_cast<BQIndex>(std::strlen(row.text)) : -1);
  }
}

/* Once for each position the whole rest was searched for the letter in the other case. */
TEST(String, SearchWithoutCaseTakesTimeInProportion) {
  auto upper = string(std::string(4 << 20, 'A'));
  EXPECT_FALSE(
      BQStringFind(upper.get(), BQSTR("ax"), whole(upper.get()), kBQCompareCaseInsensitive, nullptr));
}

TEST(String, ReadsTheNumberAtTheStart) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::pair<double, std::vector<std::string>> kRows[] = {
      {12.5, {"12.5"}},
      {7, {" \t\r\n+7z"}},
      {-0.5, {"-.5"}},
      {1000, {"1e3"}},
      {1, {"1.", "1e", "1e+", "1,5", "1\0002"s}},
      {0, {"", "abc", ".", "-", "+-1", "0x1A", "1e-400", "information", "nancy", "inf1"}},
      {5e-324, {"5e-324"}},
      {kInfinity, {"1e400", "Infinity"}},
      {-kInfinity, {"-1e400", "-INF"}},
      {-1.7976931348623157e308, {"-1.7976931348623157e308"}},
  };
  for (const auto& [value, texts] : kRows) {
    for (const std::string& text : texts) {
      EXPECT_EQ(BQStringGetDoubleValue(string(text).get()), value) << text;
    }
  }
  EXPECT_TRUE(std::isnan(BQStringGetDoubleValue(BQSTR("NaN"))));
  EXPECT_TRUE(std::signbit(BQStringGetDoubleValue(BQSTR("-0"))));
}

TEST(String, BytesAreConvertedAsFarAsTheyFit) {
  const std::string kText =
      "a\xC3\xA9\xE2\x82\xAC"
      "b"; /* a, e acute, euro, b: 1, 2, 3 and 1 bytes */
  const struct {
    BQStringEncoding encoding;
    uint8_t lossByte;
    BQIndex size, read;
    std::string bytes;
  } kRows[] = {
      {kBQStringEncodingUTF8, 0, 100, 7, kText},
      {kBQStringEncodingUTF8, 0, 2, 1, "a"},
      {kBQStringEncodingUTF8, 0, 6, 6, kText.substr(0, 6)},
      {kBQStringEncodingUTF8, 0, 0, 0, ""},
      {kBQStringEncodingUTF8, 0, -5, 0, ""},
      {kBQStringEncodingASCII, 0, 100, 1, "a"},
      {kBQStringEncodingASCII, '?', 100, 7, "a??b"},
      {kBQStringEncodingASCII, '?', 3, 6, "a??"},
      {kBQStringEncodingISOLatin1, 0, 100, 3, "a\xE9"},
      {kBQStringEncodingUTF16BE, 0, 100, 7, "\0a\0\xE9\x20\xAC\0b"s},
      {kBQStringEncodingUTF16BE, 0, 5, 3, "\0a\0\xE9"s},
      {kBQStringEncodingUTF16, 0, 100, 7, "\xFE\xFF\0a\0\xE9\x20\xAC\0b"s},
      {kBQStringEncodingUTF16, 0, 6, 3, "\xFE\xFF\0a\0\xE9"s},
      {0x0820 /* ISO-2022-JP */, 0, 100, 1, "a"},
      {0x7FFFFFFF, '?', 100, 0, ""},
  };
  auto string = values::string(kText);
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.encoding << " into " << row.size);
    std::vector<uint8_t> buffer(100, 0xEE);
    BQIndex used = -1;
    BQIndex read = BQStringGetBytes(string.get(), whole(string.get()), row.encoding, row.lossByte,
                                    buffer.data(), row.size, &used);
    EXPECT_EQ(read, row.read);
    EXPECT_EQ(std::string(buffer.begin(), buffer.begin() + used), row.bytes);
    EXPECT_EQ(buffer[static_cast<size_t>(used)], 0xEE);
  }
}

}  // namespace
