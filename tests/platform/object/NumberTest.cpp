#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "support/PlatformValues.h"

namespace {

using namespace values;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int64_t kLowest = std::numeric_limits<int64_t>::min();
constexpr int64_t kHighest = std::numeric_limits<int64_t>::max();
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kFloatMax = std::numeric_limits<float>::max();

BQNumberType typeOf(int code) {
  return static_cast<BQNumberType>(code);
}

TEST(Number, NonsenseIsRefused) {
  int64_t value = 77;
  for (int code : {0, 15}) EXPECT_EQ(BQNumberCreate(typeOf(code), &value), nullptr);
  EXPECT_EQ(BQNumberCreate(kBQNumberIntType, nullptr), nullptr);
  auto stranger = reinterpret_cast<const BQNumber*>(BQSTR("5"));
  for (const BQNumber* number : {static_cast<const BQNumber*>(nullptr), stranger}) {
    EXPECT_EQ(BQNumberGetType(number), 0);
    EXPECT_FALSE(BQNumberIsFloatType(number));
    EXPECT_FALSE(BQNumberGetValue(number, kBQNumberSInt64Type, &value));
    EXPECT_EQ(BQNumberCompare(number, integer(1).get()), kBQCompareLessThan);
    EXPECT_EQ(BQNumberCompare(integer(1).get(), number), kBQCompareGreaterThan);
    EXPECT_EQ(BQNumberCompare(number, nullptr), kBQCompareEqualTo);
  }
  EXPECT_FALSE(BQNumberGetValue(integer(1).get(), kBQNumberSInt64Type, nullptr));
  EXPECT_FALSE(BQNumberGetValue(integer(1).get(), typeOf(0), &value));
  EXPECT_EQ(value, 77);
}

TEST(Number, IntegersAreExactOrClamped) {
  const struct {
    bq::Ref<const BQNumber> number;
    BQNumberType type;
    int64_t expected;
    bool exact;
  } kRows[] = {
      {integer(-128), kBQNumberSInt8Type, -128, true},
      {integer(-129), kBQNumberSInt8Type, -128, false},
      {integer(128), kBQNumberCharType, 127, false},
      {integer(40000), kBQNumberSInt16Type, 32767, false},
      {integer(-2147483648LL), kBQNumberSInt32Type, -2147483648LL, true},
      {integer(2147483648LL), kBQNumberIntType, 2147483647, false},
      {integer(kLowest), kBQNumberIndexType, kLowest, true},
      {real(3), kBQNumberSInt8Type, 3, true},
      {real(-3.99), kBQNumberSInt32Type, -3, false},
      {real(-0.0), kBQNumberSInt32Type, 0, true},
      {real(1e300), kBQNumberSInt64Type, kHighest, false},
      {real(kTwoTo63), kBQNumberSInt64Type, kHighest, false},
      {real(-kTwoTo63), kBQNumberSInt64Type, kLowest, true},
      {real(-kInfinity), kBQNumberSInt16Type, -32768, false},
      {real(kNaN), kBQNumberSInt32Type, 0, false},
  };
  for (const auto& row : kRows) {
    int64_t wide = 0x5555555555555555;
    SCOPED_TRACE(describe(row.number.get()));
    EXPECT_EQ(BQNumberGetValue(row.number.get(), row.type, &wide), row.exact);
    auto stored = own(BQNumberCreate(row.type, &wide));
    EXPECT_EQ(BQNumberCompare(stored.get(), integer(row.expected).get()), kBQCompareEqualTo);
  }
}

TEST(Number, WritesNoMoreThanItsType) {
  const std::pair<BQNumberType, size_t> kSizes[] = {
      {kBQNumberSInt8Type, 1}, {kBQNumberSInt16Type, 2},          {kBQNumberIntType, 4},
      {kBQNumberFloatType, 4}, {kBQNumberLongType, sizeof(long)}, {kBQNumberDoubleType, 8}};
  for (const auto& [type, size] : kSizes) {
    std::string bytes(16, '\xAA');
    BQNumberGetValue(integer(-1).get(), type, bytes.data());
    EXPECT_EQ(bytes.find_last_not_of('\xAA'), size - 1) << type;
  }
}

TEST(Number, FloatsRoundAndOnlyOverflowIsALoss) {
  const struct {
    double value, expected;
    bool kept;
  } kRows[] = {
      {0.1, 0.1f, true},
      {1e-300, 0, true},
      {std::nextafter(kFloatMax, kInfinity), kFloatMax, true},
      {1e300, kInfinity, false},
      {-1e300, -kInfinity, false},
      {-kInfinity, -kInfinity, true},
  };
  float result = 1;
  for (const auto& row : kRows) {
    EXPECT_EQ(BQNumberGetValue(real(row.value).get(), kBQNumberFloat32Type, &result), row.kept) << row.value;
    EXPECT_EQ(result, row.expected) << row.value;
  }
  EXPECT_TRUE(BQNumberGetValue(real(kNaN).get(), kBQNumberFloatType, &result));
  EXPECT_TRUE(std::isnan(result));
}

/* Each row is less than the next one; the numbers of a row are equal, whatever their type. */
TEST(Number, OrdersAcrossTypesExactly) {
  int8_t small = 65;
  float single = 65;
  const std::vector<std::vector<Value>> kAscending = {
      {real(kNaN), real(-kNaN)},
      {real(-kInfinity), real(-kInfinity)},
      {real(-1e19)},
      {integer(kLowest), real(-kTwoTo63)},
      {integer(-1)},
      {real(-0.5)},
      {integer(0), real(-0.0)},
      {real(5e-324)},
      {integer(1)},
      {real(1.5)},
      {own(BQNumberCreate(kBQNumberSInt8Type, &small)), integer(65), real(65),
       own(BQNumberCreate(kBQNumberFloatType, &single))},
      {integer(9007199254740992)},
      {integer(9007199254740993)},
      {real(9007199254740994.0)},
      {integer(kHighest)},
      {real(kTwoTo63)},
      {real(kInfinity)},
  };
  const auto expectOrder = [](BQTypeRef left, BQTypeRef right, int order) {
    SCOPED_TRACE(describe(left) + " " + describe(right));
    EXPECT_EQ(BQNumberCompare(static_cast<const BQNumber*>(left), static_cast<const BQNumber*>(right)),
              order);
    EXPECT_EQ(BQEqual(left, right), order == 0);
    EXPECT_TRUE(order != 0 || BQHash(left) == BQHash(right));
  };
  for (const auto& row : kAscending) {
    for (const auto& other : kAscending) {
      for (const Value& left : row) {
        for (const Value& right : other) {
          expectOrder(left.get(), right.get(), &row < &other ? -1 : &row > &other ? 1 : 0);
        }
      }
    }
  }
  EXPECT_FALSE(BQEqual(integer(1).get(), kBQBooleanTrue));
  EXPECT_FALSE(BQEqual(integer(1).get(), BQSTR("1")));
}

}  // namespace
