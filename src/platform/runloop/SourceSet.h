/* The sources of one mode, and those of them that wait to be performed. */
#ifndef BQ_RUNLOOP_SOURCE_SET_H
#define BQ_RUNLOOP_SOURCE_SET_H

#include <BQ/BQRunLoop.h>

#include <cstdint>
#include <vector>

#include "platform/object/Object.h"

namespace bq {

struct RunLoopMode;

/* A source's place in one mode; holds the mode's reference to the source. */
struct SourceEntry {
  static constexpr size_t kNowhere = static_cast<size_t>(-1);

  Ref<BQRunLoopSource> source;
  RunLoopMode* mode;
  size_t memberPosition = kNowhere;
  size_t pendingPosition = kNowhere;
  /* Counts the signals of the loop, to tell those before a pass from those within it. */
  uint64_t signalNumber = 0;
};

/* A signal that was there when a pass looked. */
struct PendingSignal {
  BQIndex order;
  uint64_t number;
  Ref<BQRunLoopSource> source;
};

/* Everything here happens under the lock of the loop: other threads signal. */
class SourceSet {
 public:
  void insert(SourceEntry& entry);
  void erase(SourceEntry& entry);

  void queue(SourceEntry& entry, uint64_t signalNumber);
  /* Whether the entry was queued, which it then is no longer. */
  bool unqueue(SourceEntry& entry);

  bool isEmpty() const { return members_.empty(); }
  bool hasPending() const { return !pending_.empty(); }
  const std::vector<SourceEntry*>& members() const { return members_; }
  /* Appends what is queued, in no order. */
  void collectPending(std::vector<PendingSignal>& signals) const;

 private:
  std::vector<SourceEntry*> members_;
  std::vector<SourceEntry*> pending_;
};

}  // namespace bq

#endif
