#include "platform/runloop/Clock.h"

#include <BQ/BQDate.h>

#include <time.h>

#include <atomic>
#include <cmath>

namespace bq {

namespace {

thread_local ClockForTesting* testClock = nullptr;

constexpr Nanoseconds kNanosecondsPerSecond = 1'000'000'000;

Nanoseconds readClock(clockid_t clock) {
  timespec time;
  clock_gettime(clock, &time);
  return static_cast<Nanoseconds>(time.tv_sec) * kNanosecondsPerSecond + time.tv_nsec;
}

/* Absolute time less monotonic time. A reading that was interrupted half-way is taken again. */
Nanoseconds measureOffset() {
  constexpr Nanoseconds kEpoch =
      static_cast<Nanoseconds>(kBQAbsoluteTimeIntervalSince1970) * kNanosecondsPerSecond;
  constexpr Nanoseconds kInterrupted = 50'000;
  for (int attempts = 4;; --attempts) {
    const Nanoseconds before = readClock(CLOCK_MONOTONIC);
    const Nanoseconds realTime = readClock(CLOCK_REALTIME);
    const Nanoseconds elapsed = readClock(CLOCK_MONOTONIC) - before;
    if (elapsed < kInterrupted || attempts == 0) return realTime - kEpoch - before - elapsed / 2;
  }
}

/*
 * The offset is measured each time but changed only when the system's clock really moved, so that
 * the jitter of measuring does not order timers of one date.
 */
Nanoseconds currentOffset() {
  if (testClock != nullptr) return testClock->absolute - testClock->monotonic;
  constexpr Nanoseconds kJitter = 500'000;
  static std::atomic<Nanoseconds> settled{measureOffset()};
  const Nanoseconds measured = measureOffset();
  const Nanoseconds used = settled.load(std::memory_order_relaxed);
  if (std::abs(measured - used) <= kJitter) return used;
  settled.store(measured, std::memory_order_relaxed);
  return measured;
}

}  // namespace

Nanoseconds monotonicTime() {
  return testClock != nullptr ? testClock->monotonic : readClock(CLOCK_MONOTONIC);
}

Nanoseconds nanosecondsOf(BQTimeInterval seconds) {
  constexpr BQTimeInterval kLimit = 9.2e9;
  if (!(seconds < kLimit)) return kForever;
  if (seconds <= -kLimit) return kLongAgo;
  /* The digits of a double do not hold today's date in nanoseconds. */
  return static_cast<Nanoseconds>(std::llround(static_cast<long double>(seconds) * kNanosecondsPerSecond));
}

Nanoseconds addClamped(Nanoseconds first, Nanoseconds second) {
  Nanoseconds sum;
  if (!__builtin_add_overflow(first, second, &sum)) return sum;
  return second > 0 ? kForever : kLongAgo;
}

Nanoseconds monotonicTimeOf(BQAbsoluteTime time) {
  const Nanoseconds absolute = nanosecondsOf(time);
  return absolute == kForever ? kForever : addClamped(absolute, -currentOffset());
}

BQAbsoluteTime absoluteTimeOf(Nanoseconds time) {
  const Nanoseconds absolute = addClamped(time, currentOffset());
  return static_cast<BQAbsoluteTime>(static_cast<long double>(absolute) / kNanosecondsPerSecond);
}

void setClockForTesting(ClockForTesting* clock) {
  testClock = clock;
}

ClockForTesting* clockForTesting() {
  return testClock;
}

}  // namespace bq
