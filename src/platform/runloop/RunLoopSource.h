/* A function that runs on a loop's thread after it was asked for on any thread. */
#ifndef BQ_RUNLOOP_RUN_LOOP_SOURCE_H
#define BQ_RUNLOOP_RUN_LOOP_SOURCE_H

#include <BQ/BQRunLoop.h>

#include <atomic>
#include <memory>
#include <vector>

#include "platform/object/Object.h"
#include "platform/runloop/Mutex.h"
#include "platform/runloop/SourceSet.h"

/*
 * The lock guards the entries; it is taken before that of a loop, and no function of the context is
 * called under it. A loop takes its entries away before it goes, so the loop of an entry that is
 * seen under the lock is there.
 */
struct BQRunLoopSource final : bq::Object {
  BQRunLoopSource(BQTypeID typeID, BQIndex order, const BQRunLoopSourceContext& context);
  ~BQRunLoopSource();

  BQIndex order() const { return order_; }
  bool isValid() const { return valid_.load(std::memory_order_acquire); }

  void signal();
  void invalidate();

  /* Puts the source in a mode and tells the context. Refused if it is there or invalid. */
  void addTo(bq::RunLoopMode& mode);
  /* Takes the source out of a mode and tells the context. */
  void removeFrom(bq::RunLoopMode& mode);
  /* Takes the source out of a mode of a loop that ends, without a call to the context. */
  std::unique_ptr<bq::SourceEntry> abandon(bq::RunLoopMode& mode);
  bool isIn(const bq::RunLoopMode& mode) const;

  /*
   * Performs a signal that a pass of a mode found, unless somebody has by now. While the source is being
   * performed it is not performed again: a signal waits until the perform is done.
   */
  bool perform(bq::RunLoopMode& mode, uint64_t signalNumber);

  const BQString* copyDescription() const;
  bool equals(const BQRunLoopSource& other) const;
  BQHashCode hash() const;

 private:
  struct Removal;

  bq::SourceEntry* findEntry(const bq::RunLoopMode& mode) const;
  std::unique_ptr<bq::SourceEntry> takeEntry(size_t index);
  bool takeSignal(bq::RunLoopMode& mode, uint64_t signalNumber);
  void cancel(const Removal& removal);
  void queueEntries();

  const BQIndex order_;
  BQRunLoopSourceContext context_;
  std::atomic<bool> valid_{true};
  std::atomic<bool> signalled_{false};
  mutable bq::Mutex mutex_;
  bool performing_ = false;
  std::vector<std::unique_ptr<bq::SourceEntry>> entries_;
};

#endif
