/* Points in time and the Gregorian calendar in UTC. */
#ifndef BQ_DATE_H
#define BQ_DATE_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** Seconds from 1970-01-01T00:00:00Z to 2001-01-01T00:00:00Z. */
#define kBQAbsoluteTimeIntervalSince1970 978307200.0

/** A date and time of day in UTC. */
typedef struct BQGregorianDate {
  /** The year; 0 is the year before 1. */
  int32_t year;
  /** 1 to 12. */
  int8_t month;
  /** The day of the month, 1 to 31. */
  int8_t day;
  /** 0 to 23. */
  int8_t hour;
  /** 0 to 59. */
  int8_t minute;
  /** 0 up to 60, with a fraction. */
  double second;
} BQGregorianDate;

/** The identifier of the date class. */
BQ_EXPORT BQTypeID BQDateGetTypeID(void);

/** A new date, owned by the caller. */
BQ_EXPORT const BQDate* BQDateCreate(BQAbsoluteTime time);

/** The date's time; 0 for null. */
BQ_EXPORT BQAbsoluteTime BQDateGetAbsoluteTime(const BQDate* date);

/** The present time of the system's clock. */
BQ_EXPORT BQAbsoluteTime BQAbsoluteTimeGetCurrent(void);

/**
 * The time of a date in the proleptic Gregorian calendar, UTC. Fields out of range are carried
 * into their neighbours: month 0 is December of the year before, day 0 the last day of the month
 * before, hour -2 is 22:00 of the day before.
 */
BQ_EXPORT BQAbsoluteTime BQGregorianDateGetAbsoluteTime(BQGregorianDate date);

/**
 * The calendar fields of a time, UTC. A time that is not finite or beyond the years that 32 bits
 * hold is clamped to that range (NaN to 2001-01-01).
 */
BQ_EXPORT BQGregorianDate BQAbsoluteTimeGetGregorianDate(BQAbsoluteTime time);

BQ_EXTERN_C_END

#endif
