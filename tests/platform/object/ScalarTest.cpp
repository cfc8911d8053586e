#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ctime>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/PlatformValues.h"

namespace {

using namespace values;

/* Holds every integer and every double, under valgrind too, which cuts long double to 64 bits. */
#ifdef __SIZEOF_FLOAT128__
using Exact = __float128;
#else
using Exact = long double;
#endif

/* A number beside its value. */
struct Sample {
  bq::Ref<const BQNumber> number;
  Exact value;
};

std::vector<Sample> samples() {
  const int8_t small = 65;
  const float single = 65;
  std::vector<Sample> result = {{own(BQNumberCreate(kBQNumberSInt8Type, &small)), 65},
                                {own(BQNumberCreate(kBQNumberFloatType, &single)), 65}};
  std::istringstream integers(
      "0 1 -1 65 -128 128 -32769 2147483647 -2147483648 2147483648 9007199254740992 9007199254740993 "
      "9223372036854775807 -9223372036854775808");
  for (int64_t value; integers >> value;) result.push_back({integer(value), static_cast<Exact>(value)});
  std::istringstream reals(
      "nan -nan inf -inf 1e300 -1e300 0x1p63 -0x1p63 -0x1.0000000000001p63 0x1p53 0x1.fffffep127 "
      "0x1.fffffe0000001p127 65 "
      "-3.99 1.5 -0.5 0.1 0 -0.0 5e-324");
  for (std::string word; reals >> word;) {
    const double value = std::strtod(word.c_str(), nullptr);
    result.push_back({real(value), value});
  }
  return result;
}

/* An integer type truncates and clamps. A floating type rounds, and only overflow is a loss. */
template <class T>
T convert(const Exact value, bool& isKept) {
  constexpr Exact kLowest = std::numeric_limits<T>::lowest(), kHighest = std::numeric_limits<T>::max();
  if constexpr (std::is_floating_point_v<T>) {
    isKept = !std::isinf(static_cast<T>(value)) || std::isinf(static_cast<double>(value));
    return static_cast<T>(value);
  }
  const Exact number = value == value ? value : 0;
  const T result = static_cast<T>(std::min(std::max(number, kLowest), kHighest));
  isKept = result == value;
  return result;
}

template <class T>
void expectValues(std::initializer_list<BQNumberType> types) {
  for (const auto& [number, value] : samples()) {
    for (BQNumberType type : types) {
      SCOPED_TRACE(describe(number.get()) + " as " + std::to_string(type));
      bool isKept = false;
      T expected = convert<T>(value, isKept), found[2] = {0, 7};
      EXPECT_EQ(BQNumberGetValue(number.get(), type, found), isKept);
      EXPECT_TRUE(found[0] == expected || std::isnan(found[0] + expected));
      EXPECT_EQ(found[1], 7) << "not written";
      auto copy = own(BQNumberCreate(type, &expected));
      EXPECT_TRUE(BQNumberGetType(copy.get()) == type &&
                  BQNumberIsFloatType(copy.get()) == std::is_floating_point_v<T>);
    }
  }
}

TEST(Number, IsGivenAsEachType) {
  expectValues<int8_t>({kBQNumberSInt8Type, kBQNumberCharType});
  expectValues<int16_t>({kBQNumberSInt16Type, kBQNumberShortType});
  expectValues<int32_t>({kBQNumberSInt32Type, kBQNumberIntType});
  expectValues<int64_t>({kBQNumberSInt64Type, kBQNumberLongType, kBQNumberLongLongType, kBQNumberIndexType});
  expectValues<float>({kBQNumberFloat32Type, kBQNumberFloatType});
  expectValues<double>({kBQNumberFloat64Type, kBQNumberDoubleType});
  int64_t value = 77;
  for (auto unknown : {BQNumberType(0), BQNumberType(15)}) {
    EXPECT_EQ(BQNumberCreate(unknown, &value), nullptr);
    EXPECT_TRUE(!BQNumberGetValue(integer(1).get(), unknown, &value) && value == 77);
  }
}

TEST(Number, OrdersAcrossTypesExactlyWithNaNFirst) {
  for (const auto& [left, first] : samples()) {
    for (const auto& [right, second] : samples()) {
      int order = first < second ? -1 : first > second ? 1 : int{second != second} - int{first != first};
      SCOPED_TRACE(describe(left.get()) + " " + describe(right.get()));
      EXPECT_EQ(BQNumberCompare(left.get(), right.get()), order);
      EXPECT_EQ(BQEqual(left.get(), right.get()), order == 0);
      EXPECT_TRUE(order != 0 || BQHash(left.get()) == BQHash(right.get()));
    }
  }
}

/* Fields that are out of range are carried. */
TEST(Date, ConvertsLikeTheCLibrary) {
  std::mt19937 random(20240229);
  auto between = [&random](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
  for (int i = 0; i < 20000; ++i) {
    SCOPED_TRACE(i);
    const double fraction = between(0, 3) / 4.0;
    tm fields = {};
    for (int* field : {&fields.tm_min, &fields.tm_hour, &fields.tm_mday, &fields.tm_mon})
      *field = between(-127, 126);
    fields.tm_year = between(-9000, 9000);
    fields.tm_sec = between(-100, 100);
    BQGregorianDate date = {fields.tm_year + 1900,  int8_t(fields.tm_mon + 1), int8_t(fields.tm_mday),
                            int8_t(fields.tm_hour), int8_t(fields.tm_min),     fields.tm_sec + fraction};
    BQAbsoluteTime time = BQGregorianDateGetAbsoluteTime(date);
    ASSERT_EQ(time, static_cast<double>(timegm(&fields)) + fraction - kBQAbsoluteTimeIntervalSince1970);
    date = BQAbsoluteTimeGetGregorianDate(time);
    ASSERT_EQ(std::tie(date.year, date.month, date.day),
              std::tuple(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday));
    ASSERT_EQ(std::tie(date.hour, date.minute, date.second),
              std::tuple(fields.tm_hour, fields.tm_min, fields.tm_sec + fraction));
  }
  EXPECT_NEAR(BQAbsoluteTimeGetCurrent() + kBQAbsoluteTimeIntervalSince1970,
              static_cast<double>(time(nullptr)), 1000);
}

TEST(Date, FieldsStayInTheirRanges) {
  for (double time :
       {-1e-20, -1e-9, 59.99999999999999, 3599.9999999999995, 86399.99999999999, -86400.00000000001}) {
    BQGregorianDate date = BQAbsoluteTimeGetGregorianDate(time);
    EXPECT_TRUE(date.second >= 0 && date.second < 60 && date.minute < 60 && date.hour < 24) << time;
    EXPECT_NEAR(BQGregorianDateGetAbsoluteTime(date), time, 1e-9);
  }
  EXPECT_EQ(describe(own(BQDateCreate(INFINITY)).get()), "2147483647-12-31T23:59:52Z");
  EXPECT_EQ(describe(own(BQDateCreate(-1e300)).get()), "-2147483648-01-01T00:00:00Z");
  EXPECT_EQ(describe(own(BQDateCreate(NAN)).get()), "2001-01-01T00:00:00Z");
}

}  // namespace
