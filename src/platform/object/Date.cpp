#include <BQ/BQDate.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <limits>

#include "platform/object/Classes.h"
#include "platform/object/Object.h"

struct BQDate : bq::Object {
  BQAbsoluteTime time;

  BQDate(BQTypeID typeID, BQAbsoluteTime absoluteTime) : Object(typeID), time(absoluteTime) {}
};

namespace bq {
namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr int64_t kDaysPerCycle = 146097;
constexpr int64_t kYearsPerCycle = 400;
constexpr double kSecondsPerDay = 86400.0;
constexpr sys_days kReferenceDay = year{2001} / 1 / 1;

int64_t floorDivide(int64_t value, int64_t divisor) {
  int64_t quotient = value / divisor;
  return value % divisor < 0 ? quotient - 1 : quotient;
}

/*
 * Days from the reference day to the first of a month. The calendar library's years end at 32767;
 * the calendar repeats every 400 years, so the year is taken in the cycle that begins in 2000.
 */
int64_t daysToMonth(int64_t anyYear, int64_t anyMonth) {
  anyYear += floorDivide(anyMonth - 1, 12);
  auto monthOfYear = static_cast<unsigned>(anyMonth - 1 - floorDivide(anyMonth - 1, 12) * 12 + 1);
  int64_t cycle = floorDivide(anyYear - 2000, kYearsPerCycle);
  auto yearOfCycle = static_cast<int>(anyYear - cycle * kYearsPerCycle);
  sys_days day = year{yearOfCycle} / std::chrono::month{monthOfYear} / 1;
  return (day - kReferenceDay).count() + cycle * kDaysPerCycle;
}

/* The times that the year field can hold: whole days, exact as doubles, and the double before the end. */
double earliestTime() {
  static const auto day = static_cast<double>(daysToMonth(std::numeric_limits<int32_t>::min(), 1));
  return day * kSecondsPerDay;
}
double latestTime() {
  static const auto end =
      static_cast<double>(daysToMonth(int64_t{std::numeric_limits<int32_t>::max()} + 1, 1));
  return std::nextafter(end * kSecondsPerDay, 0);
}

bool equalDates(BQTypeRef first, BQTypeRef second) {
  return static_cast<const BQDate*>(first)->time == static_cast<const BQDate*>(second)->time;
}

BQHashCode hashDate(BQTypeRef object) {
  return std::hash<double>()(static_cast<const BQDate*>(object)->time);
}

}  // namespace

const BQRuntimeClass kDateClass = {0,          "BQDate", nullptr, nullptr, nullptr,
                                   equalDates, hashDate, nullptr, nullptr};

}  // namespace bq

BQTypeID BQDateGetTypeID(void) {
  return bq::kDateTypeID;
}

const BQDate* BQDateCreate(BQAbsoluteTime time) {
  return bq::makeObject<BQDate>(bq::kDateTypeID, time);
}

BQAbsoluteTime BQDateGetAbsoluteTime(const BQDate* date) {
  return bq::isInstance(date, bq::kDateTypeID) ? date->time : 0;
}

BQAbsoluteTime BQAbsoluteTimeGetCurrent(void) {
  std::chrono::duration<double> sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return sinceEpoch.count() - kBQAbsoluteTimeIntervalSince1970;
}

BQAbsoluteTime BQGregorianDateGetAbsoluteTime(BQGregorianDate date) {
  int64_t dayNumber = bq::daysToMonth(date.year, date.month) + date.day - 1;
  int64_t seconds = dayNumber * 86400 + date.hour * 3600 + date.minute * 60;
  return static_cast<double>(seconds) + date.second;
}

BQGregorianDate BQAbsoluteTimeGetGregorianDate(BQAbsoluteTime time) {
  if (std::isnan(time)) time = 0;
  time = std::fmin(std::fmax(time, bq::earliestTime()), bq::latestTime());
  double wholeDays = std::floor(time / bq::kSecondsPerDay);
  double secondOfDay = time - wholeDays * bq::kSecondsPerDay;
  if (secondOfDay >= bq::kSecondsPerDay) {
    secondOfDay = 0;
    wholeDays += 1;
  }
  auto dayNumber = static_cast<int64_t>(wholeDays);
  int64_t cycle = bq::floorDivide(dayNumber, bq::kDaysPerCycle);
  bq::year_month_day civil{bq::kReferenceDay + bq::days{dayNumber - cycle * bq::kDaysPerCycle}};
  auto wholeMinutes = static_cast<int>(secondOfDay / 60);
  BQGregorianDate result;
  result.year = static_cast<int32_t>(static_cast<int>(civil.year()) + cycle * bq::kYearsPerCycle);
  result.month = static_cast<int8_t>(static_cast<unsigned>(civil.month()));
  result.day = static_cast<int8_t>(static_cast<unsigned>(civil.day()));
  result.hour = static_cast<int8_t>(wholeMinutes / 60);
  result.minute = static_cast<int8_t>(wholeMinutes % 60);
  result.second = secondOfDay - wholeMinutes * 60;
  return result;
}
