/* How much memory a piece of work takes: every allocation of the process passes by here. */
#ifndef BENCH_ALLOCATION_METER_H
#define BENCH_ALLOCATION_METER_H

#include <cstdint>

namespace bench {

/*
 * What was allocated since the meter was made. Only one thread may allocate meanwhile. Only a program
 * that is there to measure memory links it: counting slows every allocation.
 */
class AllocationMeter {
 public:
  AllocationMeter();

  /* The bytes in use now beyond those in use at the start, and the most that there were. */
  int64_t inUse() const;
  int64_t peak() const;
  int64_t allocationCount() const;

 private:
  int64_t bytesAtStart_;
  int64_t countAtStart_;
};

}  // namespace bench

#endif
