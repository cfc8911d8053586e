#include <gtest/gtest.h>

#include <cmath>

#include "support/Values.h"
#include "values/AutoScalar.h"
#include "values/AutoString.h"
#include "values/AutoURL.h"

namespace {

using namespace support;
using vx::AutoScalar;
using vx::AutoString;
using vx::AutoURL;

BQNumberType typeOf(AutoScalar&& scalar) {
  return BQNumberGetType(static_cast<const BQNumber*>(scalar.getRef()));
}

TEST(AutoScalar, MakesNumbersOfFixedTypes) {
  EXPECT_EQ(typeOf(AutoScalar(7)), kBQNumberIntType);
  EXPECT_EQ(typeOf(AutoScalar(7L)), kBQNumberSInt32Type);
  EXPECT_EQ(typeOf(AutoScalar(7.5f)), kBQNumberFloatType);
  EXPECT_EQ(typeOf(AutoScalar(7.5)), kBQNumberDoubleType);
}

TEST(AutoScalar, ReadsZeroWhereTheValueDoesNotFit) {
  const struct {
    Value value;
    int asInt;
    double asDouble;
  } rows[] = {
      {integer(42), 42, 42},
      {integer(-1), -1, -1},
      {integer(int64_t{1} << 31, kBQNumberSInt64Type), 0, 2147483648.0},
      {real(2.5), 0, 2.5},
      {real(3), 3, 3},
      {string("42"), 0, 0},
      {Value(), 0, 0},
  };
  for (const auto& row : rows) {
    AutoScalar scalar(BQRetain(row.value.get()));
    EXPECT_EQ(scalar.toInt(), row.asInt) << notation(row.value.get());
    EXPECT_EQ(scalar.toDouble(), row.asDouble) << notation(row.value.get());
    EXPECT_EQ(scalar.toFloat(), static_cast<float>(row.asDouble)) << notation(row.value.get());
  }
  EXPECT_EQ(AutoScalar(1e300).toFloat(), 0) << "beyond what a float holds";
}

TEST(AutoScalar, IsNeverEmptyAndReleasesWhatItTookOver) {
  EXPECT_FALSE(AutoScalar(static_cast<const void*>(nullptr)).isEmpty());
  Value value = string("kept");
  {
    AutoScalar holder(BQRetain(value.get()));
    EXPECT_EQ(holder.getRef(), value.get());
    EXPECT_EQ(BQGetRetainCount(value), 2);
  }
  EXPECT_EQ(BQGetRetainCount(value), 1);
}

TEST(AutoString, IsEmptyOnlyWhenItHoldsNull) {
  EXPECT_TRUE(AutoString().isEmpty());
  EXPECT_TRUE(AutoString(static_cast<const BQString*>(nullptr)).isEmpty());
  EXPECT_FALSE(AutoString(BQSTR("")).isEmpty());
}

TEST(AutoString, AppendsFormattedPieces) {
  AutoString holder;
  holder.append("%d", 5);
  EXPECT_EQ(text(holder.get()), "5");
  holder.append("x");
  EXPECT_EQ(text(holder.get()), "5x");
  holder.append("%@%%", BQSTR("\u00e9"));
  EXPECT_EQ(text(holder.get()), "5x\u00e9%");
}

TEST(AutoString, MayBeSetToItsOwnValueAndReleasesTheOldOne) {
  Value value = string("own"), other = string("other");
  AutoString holder;
  holder.setString(value);
  holder.setString(holder.get());
  EXPECT_EQ(holder.get(), value.get());
  EXPECT_EQ(BQGetRetainCount(value), 2);
  holder.setString(other);
  EXPECT_EQ(BQGetRetainCount(value), 1);
  holder.setString(nullptr);
  EXPECT_TRUE(holder.isEmpty());
  EXPECT_EQ(BQGetRetainCount(other), 1);
}

TEST(AutoURL, TakesItsTextLiterally) {
  AutoURL url("http://localhost/a%20b?x=%2525d");
  ASSERT_FALSE(url.isEmpty());
  EXPECT_EQ(text(BQURLGetString(url.get())), "http://localhost/a%20b?x=%2525d");
  EXPECT_EQ(url.getRef(), url.get());
  EXPECT_TRUE(AutoURL("http://a b/").isEmpty()) << "a text that is no URL";
  EXPECT_TRUE(AutoURL(static_cast<const char*>(nullptr)).isEmpty());
  AutoString held("http://localhost/%d", 7);
  EXPECT_EQ(text(BQURLGetString(AutoURL(held).get())), "http://localhost/7");
}

}  // namespace
