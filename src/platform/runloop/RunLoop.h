/* The loop of one thread: its modes, its runs and its sleep. */
#ifndef BQ_RUNLOOP_RUN_LOOP_H
#define BQ_RUNLOOP_RUN_LOOP_H

#include <BQ/BQRunLoop.h>

#include <memory>
#include <mutex>
#include <vector>

#include "platform/object/Object.h"
#include "platform/runloop/Mutex.h"
#include "platform/runloop/RunLoopMode.h"

/*
 * The lock guards what other threads reach: the sources of the modes, the innermost run and the
 * sleep. No foreign function is called under it.
 */
struct BQRunLoop final : bq::Object {
  explicit BQRunLoop(BQTypeID typeID) : Object(typeID) {}
  ~BQRunLoop();

  /* Null if there is no such mode. */
  bq::RunLoopMode* findMode(const BQString* name);
  /* Null if the loop's thread has ended. */
  bq::RunLoopMode* findOrCreateMode(const BQString* name);

  BQRunLoopRunResult run(const BQString* modeName, BQTimeInterval seconds, bool returnAfterSourceHandled);
  const BQString* copyCurrentMode() const;
  void stop();
  void wakeUp();
  /* Lets everything go when the thread ends; others may hold on to the loop itself. */
  void end();

  /* For sources, in their own modes; all lock. */
  void insertSource(bq::SourceEntry& entry);
  void eraseSource(bq::SourceEntry& entry);
  void queueSource(bq::SourceEntry& entry);
  /* Whether that very signal was still queued; it then is no longer. */
  bool unqueueSource(bq::SourceEntry& entry, uint64_t signalNumber);

 private:
  class Run;

  bool isEmpty(const bq::RunLoopMode& mode) const;
  void dropIdleModes();

  bool pass(Run& run, bq::Nanoseconds limit);
  bool fireTimers(bq::RunLoopMode& mode);
  bool performSources(bq::RunLoopMode& mode);
  bool collectSignals(bq::RunLoopMode& mode, std::vector<bq::PendingSignal>& signals);
  bool waitForDescriptors(Run& run, bq::Nanoseconds until);

  void openWakeUp();
  bool fallAsleep(Run& run);
  void awake();
  void interruptSleep();

  std::vector<std::unique_ptr<bq::RunLoopMode>> modes_;
  bool ended_ = false;
  /* The memory of the last pass' signals, for the next. */
  std::vector<bq::PendingSignal> spareSignals_;

  mutable bq::Mutex mutex_;
  Run* innermost_ = nullptr;
  const bq::RunLoopMode* sleepingIn_ = nullptr;
  bool wakeUpRequested_ = false;
  bool wakeUpWritten_ = false;
  int wakeUp_ = -1;
  uint64_t lastSignalNumber_ = 0;
};

namespace bq {

/* The same for what a caller passed: null also for what is no run loop and no string. */
RunLoopMode* findMode(BQRunLoop* runLoop, const BQString* name);
RunLoopMode* findOrCreateMode(BQRunLoop* runLoop, const BQString* name);

}  // namespace bq

#endif
