/* The timers of one mode, the earliest on top. */
#ifndef BQ_RUNLOOP_TIMER_HEAP_H
#define BQ_RUNLOOP_TIMER_HEAP_H

#include <BQ/BQRunLoop.h>

#include <vector>

#include "platform/object/Object.h"
#include "platform/runloop/Clock.h"

namespace bq {

struct RunLoopMode;

/* A timer's place in one mode; holds the mode's reference to the timer. */
struct TimerEntry {
  Ref<BQRunLoopTimer> timer;
  RunLoopMode* mode;
  size_t position = 0;
};

class TimerHeap {
 public:
  void insert(TimerEntry& entry);
  void remove(TimerEntry& entry);
  /* To be called when the time or the firing state of the entry's timer has changed. */
  void update(TimerEntry& entry) { settle(entry.position); }

  bool isEmpty() const { return entries_.empty(); }
  const std::vector<TimerEntry*>& entries() const { return entries_; }
  /* When the first timer fires, kForever without one. */
  Nanoseconds earliest() const;
  /* The timers that fire at `now` or before, in the order of firing. */
  std::vector<Ref<BQRunLoopTimer>> collectDue(Nanoseconds now) const;

 private:
  void settle(size_t position);
  void place(TimerEntry* entry, size_t position);

  std::vector<TimerEntry*> entries_;
};

}  // namespace bq

#endif
