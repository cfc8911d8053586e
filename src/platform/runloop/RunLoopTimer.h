/* A function that is called at a time, once or again and again. */
#ifndef BQ_RUNLOOP_RUN_LOOP_TIMER_H
#define BQ_RUNLOOP_RUN_LOOP_TIMER_H

#include <BQ/BQRunLoop.h>

#include <memory>
#include <vector>

#include "platform/object/Object.h"
#include "platform/runloop/Clock.h"
#include "platform/runloop/TimerHeap.h"

struct BQRunLoopTimer final : bq::Object {
  BQRunLoopTimer(BQTypeID typeID, bq::Nanoseconds deadline, bq::Nanoseconds interval,
                 BQRunLoopTimerCallBack callback, const BQRunLoopTimerContext* context);
  ~BQRunLoopTimer();

  bool isValid() const { return valid_; }
  uint64_t creationNumber() const { return creationNumber_; }
  bq::Nanoseconds deadline() const { return deadline_; }
  void setDeadline(bq::Nanoseconds deadline);

  /*
   * The time by which modes order the timer. While its callback runs it does not fire again, not
   * even in a run of the loop from inside the callback, nor does such a run wake up for it.
   */
  bq::Nanoseconds nextFiring() const { return firing_ ? bq::kForever : deadline_; }

  /* Puts the timer in a mode. Refused if it is there, invalid, or on another run loop. */
  void addTo(bq::RunLoopMode& mode);
  /* The mode's entry, which the caller destroys; null if the timer is not in the mode. */
  std::unique_ptr<bq::TimerEntry> removeFrom(bq::RunLoopMode& mode);
  bool isIn(const bq::RunLoopMode& mode) const;
  void invalidate();

  void fire(bq::Nanoseconds now);

  const BQString* copyDescription() const;

 private:
  void updateModes();
  void setFiring(bool firing);

  bq::Nanoseconds deadline_;
  bq::Nanoseconds interval_;
  uint64_t creationNumber_;
  BQRunLoopTimerCallBack callback_;
  BQRunLoopTimerContext context_{};
  bool valid_ = true;
  bool firing_ = false;
  std::vector<std::unique_ptr<bq::TimerEntry>> entries_;
};

#endif
