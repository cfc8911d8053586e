#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>

#include "support/PlatformValues.h"

namespace {

using namespace values;

BQGregorianDate fields(int32_t year, int8_t month, int8_t day, int8_t hour = 0, int8_t minute = 0,
                       double second = 0) {
  return {year, month, day, hour, minute, second};
}

void expectFields(const BQGregorianDate& expected, const BQGregorianDate& actual) {
  EXPECT_EQ(std::tie(expected.year, expected.month, expected.day, expected.hour, expected.minute),
            std::tie(actual.year, actual.month, actual.day, actual.hour, actual.minute));
  EXPECT_DOUBLE_EQ(expected.second, actual.second);
}

TEST(Date, FieldsAndTimesConvertBothWays) {
  const std::pair<BQGregorianDate, BQAbsoluteTime> kRows[] = {
      {fields(2001, 1, 1), 0},
      {fields(1970, 1, 1), -kBQAbsoluteTimeIntervalSince1970},
      {fields(1969, 12, 31, 23, 59, 59.5), -kBQAbsoluteTimeIntervalSince1970 - 0.5},
      {fields(1998, 7, 17, 14, 8, 55), -77622665},
      {fields(2038, 1, 19, 3, 14, 8), 1169176448},
      {fields(1900, 2, 28, 23, 59, 59), -3182198401},
      {fields(1900, 3, 1), -3182198400},
      {fields(0, 2, 29), -63140428800}, /* a leap year of the proleptic calendar */
      {fields(-4713, 11, 24), -211845110400},
      {fields(100000, 6, 15, 1, 2, 3), 3092564019723},
      {fields(std::numeric_limits<int32_t>::max(), 12, 31), 67767975255139200},
      {fields(std::numeric_limits<int32_t>::min(), 1, 1), -67768101546278400},
  };
  for (const auto& [date, time] : kRows) {
    SCOPED_TRACE(date.year);
    EXPECT_EQ(BQGregorianDateGetAbsoluteTime(date), time);
    expectFields(date, BQAbsoluteTimeGetGregorianDate(time));
  }
}

TEST(Date, FieldsOutOfRangeAreCarried) {
  const std::pair<BQGregorianDate, BQGregorianDate> kRows[] = {
      {fields(2024, 0, 1), fields(2023, 12, 1)},
      {fields(2024, 13, 1), fields(2025, 1, 1)},
      {fields(2024, 127, 31), fields(2034, 7, 31)},
      {fields(2024, -128, 1), fields(2013, 4, 1)},
      {fields(2024, 3, 0), fields(2024, 2, 29)},
      {fields(2024, 1, -1), fields(2023, 12, 30)},
      {fields(2024, 1, 1, -2), fields(2023, 12, 31, 22)},
      {fields(2024, 12, 31, 24), fields(2025, 1, 1)},
      {fields(2024, 1, 1, 0, 61), fields(2024, 1, 1, 1, 1)},
      {fields(2024, 1, 1, 0, 0, 86400.25), fields(2024, 1, 2, 0, 0, 0.25)},
      {fields(2024, 1, 1, 0, 0, -1), fields(2023, 12, 31, 23, 59, 59)},
  };
  for (const auto& [given, meant] : kRows) {
    SCOPED_TRACE(testing::Message() << meant.year << "-" << int{meant.month} << "-" << int{meant.day});
    expectFields(meant, BQAbsoluteTimeGetGregorianDate(BQGregorianDateGetAbsoluteTime(given)));
  }
}

TEST(Date, TimesBeyondTheCalendarAreClamped) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (double time : {kInfinity, 1e300, 6.8e16}) {
    BQGregorianDate date = BQAbsoluteTimeGetGregorianDate(time);
    EXPECT_EQ(date.year, std::numeric_limits<int32_t>::max());
    EXPECT_EQ(date.month * 100 + date.day, 1231);
    expectFields(fields(std::numeric_limits<int32_t>::min(), 1, 1), BQAbsoluteTimeGetGregorianDate(-time));
  }
  expectFields(fields(2001, 1, 1), BQAbsoluteTimeGetGregorianDate(std::numeric_limits<double>::quiet_NaN()));
}

TEST(Date, FieldsNeverReachTheNextUnit) {
  for (double time :
       {-1e-20, -1e-9, 59.99999999999999, 3599.9999999999995, 86399.99999999999, -86400.00000000001}) {
    BQGregorianDate date = BQAbsoluteTimeGetGregorianDate(time);
    EXPECT_TRUE(date.second >= 0 && date.second < 60 && date.minute < 60 && date.hour < 24) << time;
    EXPECT_NEAR(BQGregorianDateGetAbsoluteTime(date), time, 1e-9);
  }
}

TEST(Date, ComparesByTime) {
  auto first = own(BQDateCreate(0.5)), second = own(BQDateCreate(0.5)), other = own(BQDateCreate(0.25));
  EXPECT_TRUE(BQEqual(first.get(), second.get()));
  EXPECT_EQ(BQHash(first.get()), BQHash(second.get()));
  EXPECT_FALSE(BQEqual(first.get(), other.get()));
  EXPECT_FALSE(BQEqual(first.get(), real(0.5).get()));
  EXPECT_EQ(BQHash(own(BQDateCreate(0.0)).get()), BQHash(own(BQDateCreate(-0.0)).get()));
  EXPECT_EQ(BQDateGetAbsoluteTime(first.get()), 0.5);
  EXPECT_EQ(BQDateGetAbsoluteTime(nullptr), 0);
  EXPECT_EQ(BQDateGetAbsoluteTime(reinterpret_cast<const BQDate*>(BQSTR("1"))), 0);
  EXPECT_GT(BQAbsoluteTimeGetCurrent(), BQGregorianDateGetAbsoluteTime(fields(2020, 1, 1)));
}

}  // namespace
