#include "xml/ISODate.h"

#include <gtest/gtest.h>

#include <VX/VXDate.h>

#include <cmath>
#include <string>
#include <vector>

#include "support/Values.h"

namespace {

using namespace support;

BQAbsoluteTime timeOf(int32_t year, int month, int day, int hour = 0, int minute = 0, double second = 0) {
  return BQGregorianDateGetAbsoluteTime({year, static_cast<int8_t>(month), static_cast<int8_t>(day),
                                         static_cast<int8_t>(hour), static_cast<int8_t>(minute), second});
}

/* Reads a text from memory of exactly its size, so that a read behind its end shows. */
std::string readBack(const std::string& text) {
  std::vector<unsigned char> exact(text.begin(), text.end());
  std::string fromBytes = notation(Value::adopt(vxCreateDateFromISO8601(exact.data(), exact.size())).get());
  EXPECT_EQ(notation(Value::adopt(vx::isoDecodeDate(string(text))).get()), fromBytes);
  return fromBytes;
}

TEST(ISODate, ReadsItsFormsAndTheirFragments) {
  const std::pair<const char*, const char*> rows[] = {
      {"2005-02-28T13:45:09Z", "@2005-02-28T13:45:09"},
      {"20050228T13:45:09", "@2005-02-28T13:45:09"},
      {"2005-0228T13:45:09Z", "@2005-02-28T13:45:09"},
      {"2005-02-28T13:45:09+01:00", "@2005-02-28T12:45:09"},
      {"2005-02-28T13:45:09-05:30", "@2005-02-28T19:15:09"},
      {"2005-02-28T13:45:09+0130", "@2005-02-28T12:45:09"}, /* four digits count as hours */
      {"2005-02-28T13:45:09+01", "@2005-02-28T13:45:09"},   /* two characters are no offset */
      {"2005-02-28T13:45:09+01:3", "@2005-02-28T12:15:09"}, /* an offset cut short */
      {"2005-12-31T23:30:00-01:00", "@2006-01-01T00:30:00"},
      {"2005-02-28T13:45:09.25Z", "@2005-02-28T13:45:09.25"},
      {"2005-02-28T13:45:09,5+01:00", "@2005-02-28T12:45:09.5"},
      {"2005-02-28T13:45Z", "@2005-02-28T13:45:00"},
      {"2005-02-28T13", "@2005-02-28T13:00:00"},
      {"2005-02-28Z13:45:09+01:00", "@2005-02-28T13:45:09"}, /* no offset behind a "Z" */
      {"2005-02-28 13:45:09", "@2005-02-28T00:00:00"},       /* another separator ends it */
      {"2005-02", "@2005-01-31T00:00:00"},                   /* day 0 */
      {"2005", "@2004-11-30T00:00:00"},                      /* month 0, day 0 */
      {"20", "@1999-11-30T00:00:00"},                        /* missing digits are 0 */
      {"", "@-001-11-30T00:00:00"},
      {"20x5-0y-28", "@2004-12-28T00:00:00"}, /* what is no digit is 0 */
      {"9999-99-99T99:99:99+99:99", "@10007-06-07T00:01:39"},
  };
  for (auto [written, date] : rows) EXPECT_EQ(readBack(written), date) << written;
  const std::string whole = "2005-02-28T13:45:09.125-05:30";
  for (size_t length = 0; length <= whole.size(); ++length) EXPECT_NE(readBack(whole.substr(0, length)), "-");
}

TEST(ISODate, CharactersBeyondASCIICountOnce) {
  EXPECT_EQ(notation(Value::adopt(vx::isoDecodeDate(string("2005\u65e502\u672c28"))).get()),
            "@2004-12-20T00:00:00")
      << "read as 2005x02x28: month \"x0\", day \"2x\"";
  EXPECT_EQ(notation(Value::adopt(vx::isoDecodeDate(string("200\u00e9-02-28"))).get()),
            "@2000-02-28T00:00:00");
  EXPECT_EQ(vx::isoDecodeDate(nullptr), nullptr);
}

TEST(ISODate, WritesBothFormsWithoutFractions) {
  const struct {
    BQAbsoluteTime time;
    std::string compact;
    std::string extended;
  } rows[] = {{timeOf(2005, 2, 28, 13, 45, 9), "20050228T13:45:09Z", "2005-02-28T13:45:09Z"},
              {timeOf(2004, 2, 29, 23, 59, 59.9), "20040229T23:59:59Z", "2004-02-29T23:59:59Z"},
              {timeOf(987, 6, 5), "09870605T00:00:00Z", "0987-06-05T00:00:00Z"},
              {timeOf(12345, 1, 2), "123450102T00:00:00Z", "12345-01-02T00:00:00Z"},
              {-0.25, "20001231T23:59:59Z", "2000-12-31T23:59:59Z"}};
  for (const auto& row : rows) {
    EXPECT_EQ(text(Value::adopt(vx::isoEncodeDate(date(row.time), 1)).get()), row.compact);
    EXPECT_EQ(text(Value::adopt(vx::isoEncodeDate(date(row.time), 0)).get()), row.extended);
  }
  for (double time : {1e300, -1e300, double{INFINITY}, -double{INFINITY}, std::nan("")}) {
    EXPECT_LT(BQStringGetLength(Value::adopt(vx::isoEncodeDate(date(time), 1))), 30) << time;
  }
}

TEST(ISODate, WritesNoMoreThanTheBufferHolds) {
  Value value = date(timeOf(2005, 2, 28, 13, 45, 9));
  for (size_t size = 0; size <= 22; ++size) {
    std::string buffer(32, '#');
    EXPECT_EQ(vxBQDateToISO8601String(buffer.data(), size, value, 0), 20);
    std::string expected = size == 0 ? "" : std::string("2005-02-28T13:45:09Z").substr(0, size - 1) + '\0';
    EXPECT_EQ(buffer, expected + std::string(32 - expected.size(), '#'));
  }
  EXPECT_EQ(vxBQDateToISO8601String(nullptr, 0, value, 1), 18);
}

}  // namespace
