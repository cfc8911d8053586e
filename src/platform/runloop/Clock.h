/* The run loop's time: nanoseconds of the monotonic clock, and their relation to absolute time. */
#ifndef BQ_RUNLOOP_CLOCK_H
#define BQ_RUNLOOP_CLOCK_H

#include <BQ/BQBase.h>

#include <cstdint>
#include <limits>

namespace bq {

using Nanoseconds = int64_t;

/* A time that never comes. */
inline constexpr Nanoseconds kForever = std::numeric_limits<Nanoseconds>::max();
/* A time that has passed. */
inline constexpr Nanoseconds kLongAgo = std::numeric_limits<Nanoseconds>::min();

/* The present monotonic time. */
Nanoseconds monotonicTime();

/* Clamped to the range of the type; a value that is not a number is as long as can be. */
Nanoseconds nanosecondsOf(BQTimeInterval seconds);

/* The sum, clamped to the range of the type. */
Nanoseconds addClamped(Nanoseconds first, Nanoseconds second);

/*
 * The monotonic time of an absolute time, and the other way around. Equal absolute times give equal
 * monotonic times as long as nobody sets the system's clock.
 */
Nanoseconds monotonicTimeOf(BQAbsoluteTime time);
BQAbsoluteTime absoluteTimeOf(Nanoseconds time);

/* A clock that a test moves. `absolute` counts from 2001-01-01T00:00:00Z. */
struct ClockForTesting {
  Nanoseconds monotonic;
  Nanoseconds absolute;

  void advance(Nanoseconds duration) {
    monotonic += duration;
    absolute += duration;
  }
};

/*
 * Makes the calling thread's loop live by a clock that is borrowed: where it would wait for a time,
 * it advances the clock to that time instead. Null returns to the system's clock.
 */
void setClockForTesting(ClockForTesting* clock);

/* The clock that was set on this thread, null for the system's. */
ClockForTesting* clockForTesting();

}  // namespace bq

#endif
