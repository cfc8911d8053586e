#include "platform/runloop/RunLoop.h"

#include <BQ/BQString.h>

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "platform/object/ForkCount.h"
#include "platform/runloop/FileDescriptor.h"
#include "platform/runloop/RunLoopSource.h"
#include "platform/runloop/RunLoopTimer.h"

using bq::Nanoseconds;
using bq::RunLoopMode;

/* One run of the loop, inside the run that was there when it began. */
class BQRunLoop::Run {
 public:
  Run(BQRunLoop& loop, RunLoopMode& mode) : loop_(loop), mode_(mode), outer_(loop.innermost_) {
    ++mode_.runs;
    setInnermost(this);
  }
  ~Run() {
    setInnermost(outer_);
    --mode_.runs;
  }
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  RunLoopMode& mode() const { return mode_; }
  bool isStopped() const { return stopped_.load(std::memory_order_acquire); }
  void stop() { stopped_.store(true, std::memory_order_release); }

 private:
  void setInnermost(Run* run) {
    const std::lock_guard lock(loop_.mutex_);
    loop_.innermost_ = run;
  }

  BQRunLoop& loop_;
  RunLoopMode& mode_;
  Run* const outer_;
  std::atomic<bool> stopped_{false};
};

BQRunLoop::~BQRunLoop() {
  if (wakeUp_ >= 0) close(wakeUp_);
}

/* Modes. */

RunLoopMode* BQRunLoop::findMode(const BQString* name) {
  for (const auto& mode : modes_) {
    if (mode->name.get() == name || BQEqual(mode->name.get(), name)) return mode.get();
  }
  return nullptr;
}

RunLoopMode* BQRunLoop::findOrCreateMode(const BQString* name) {
  if (ended_) return nullptr;
  if (RunLoopMode* found = findMode(name)) return found;
  dropIdleModes();
  return modes_.emplace_back(std::make_unique<RunLoopMode>(*this, name)).get();
}

/* A mode that became empty keeps its epoll set for the next use, but not if there are many of them. */
void BQRunLoop::dropIdleModes() {
  constexpr size_t kKeptModes = 8;
  if (modes_.size() < kKeptModes) return;
  std::erase_if(modes_, [this](const auto& mode) {
    return mode->runs == 0 && isEmpty(*mode) && !mode->descriptors.hasEntries();
  });
}

bool BQRunLoop::isEmpty(const RunLoopMode& mode) const {
  if (!mode.timers.isEmpty() || mode.descriptors.isWaiting()) return false;
  const std::lock_guard lock(mutex_);
  return mode.sources.isEmpty();
}

void BQRunLoop::end() {
  ended_ = true;
  for (const auto& mode : modes_) {
    for (;;) {
      bq::Ref<BQRunLoopSource> source;
      {
        const std::lock_guard lock(mutex_);
        if (mode->sources.isEmpty()) break;
        source = mode->sources.members().back()->source;
      }
      source->abandon(*mode);
    }
    while (!mode->timers.isEmpty()) {
      const bq::Ref<BQRunLoopTimer> timer = mode->timers.entries().back()->timer;
      timer->removeFrom(*mode);
    }
    while (mode->descriptors.hasEntries()) {
      const bq::Ref<BQFileDescriptor> descriptor = mode->descriptors.anyEntry().descriptor;
      descriptor->removeFrom(*mode);
    }
  }
  modes_.clear();
}

/* Sources. */

void BQRunLoop::insertSource(bq::SourceEntry& entry) {
  const std::lock_guard lock(mutex_);
  entry.mode->sources.insert(entry);
}

void BQRunLoop::eraseSource(bq::SourceEntry& entry) {
  const std::lock_guard lock(mutex_);
  entry.mode->sources.erase(entry);
}

void BQRunLoop::queueSource(bq::SourceEntry& entry) {
  const std::lock_guard lock(mutex_);
  entry.mode->sources.queue(entry, ++lastSignalNumber_);
  if (sleepingIn_ == entry.mode) interruptSleep();
}

bool BQRunLoop::unqueueSource(bq::SourceEntry& entry, uint64_t signalNumber) {
  const std::lock_guard lock(mutex_);
  return entry.signalNumber == signalNumber && entry.mode->sources.unqueue(entry);
}

/* Running. */

namespace {

Nanoseconds limitOf(BQTimeInterval seconds) {
  if (!(seconds > 0)) return bq::kLongAgo;
  const Nanoseconds span = bq::nanosecondsOf(seconds);
  return span == bq::kForever ? span : bq::addClamped(bq::monotonicTime(), span);
}

}  // namespace

BQRunLoopRunResult BQRunLoop::run(const BQString* modeName, BQTimeInterval seconds,
                                  bool returnAfterSourceHandled) {
  RunLoopMode* mode = findMode(modeName);
  if (mode == nullptr || isEmpty(*mode)) return kBQRunLoopRunFinished;
  const Nanoseconds limit = limitOf(seconds);
  Run run(*this, *mode);
  for (;;) {
    const bool handled = pass(run, limit);
    if (run.isStopped()) return kBQRunLoopRunStopped;
    if (handled && returnAfterSourceHandled) return kBQRunLoopRunHandledSource;
    if (isEmpty(*mode)) return kBQRunLoopRunFinished;
    if (limit != bq::kForever && bq::monotonicTime() >= limit) return kBQRunLoopRunTimedOut;
  }
}

/* Whether a source was performed or a descriptor served. */
bool BQRunLoop::pass(Run& run, Nanoseconds limit) {
  RunLoopMode& mode = run.mode();
  const bool fired = fireTimers(mode);
  const bool performed = performSources(mode);
  const Nanoseconds until = fired || performed ? bq::kLongAgo : std::min(limit, mode.timers.earliest());
  return waitForDescriptors(run, until) || performed;
}

bool BQRunLoop::fireTimers(RunLoopMode& mode) {
  if (mode.timers.earliest() == bq::kForever) return false;
  const Nanoseconds now = bq::monotonicTime();
  if (mode.timers.earliest() > now) return false;
  bool fired = false;
  for (const auto& timer : mode.timers.collectDue(now)) {
    /* The timers before it may have removed or moved it. */
    if (timer->nextFiring() > now || !timer->isIn(mode)) continue;
    timer->fire(now);
    fired = true;
  }
  return fired;
}

/*
 * The signals stay queued until each is performed, so that a run of the loop from inside a perform
 * serves those that are left.
 */
bool BQRunLoop::performSources(RunLoopMode& mode) {
  std::vector<bq::PendingSignal> signals = std::exchange(spareSignals_, {});
  bool performed = false;
  if (collectSignals(mode, signals)) {
    for (const bq::PendingSignal& signal : signals) performed |= signal.source->perform(mode, signal.number);
    signals.clear();
  }
  spareSignals_ = std::move(signals);
  return performed;
}

/* In the order in which they are performed. False if there are none. */
bool BQRunLoop::collectSignals(RunLoopMode& mode, std::vector<bq::PendingSignal>& signals) {
  {
    const std::lock_guard lock(mutex_);
    if (!mode.sources.hasPending()) return false;
    mode.sources.collectPending(signals);
  }
  std::sort(signals.begin(), signals.end(), [](const auto& first, const auto& second) {
    return first.order != second.order ? first.order < second.order : first.number < second.number;
  });
  return true;
}

bool BQRunLoop::waitForDescriptors(Run& run, Nanoseconds until) {
  Nanoseconds timeout = until;
  if (until != bq::kForever && until != bq::kLongAgo) {
    const Nanoseconds now = bq::monotonicTime();
    timeout = until > now ? until - now : 0;
  }
  openWakeUp();
  bq::DescriptorSet& descriptors = run.mode().descriptors;
  bq::ReadyDescriptors ready;
  if (timeout > 0 && fallAsleep(run)) {
    descriptors.wait(timeout, wakeUp_, ready);
    awake();
  } else {
    descriptors.wait(0, wakeUp_, ready);
  }
  return descriptors.serve(ready);
}

/* Sleep. */

/* Tried again with each pass where the process had no file descriptors left. A child has one of its own. */
void BQRunLoop::openWakeUp() {
  if (wakeUp_ >= 0 && forks_ == bq::forkCount()) return;
  const std::lock_guard lock(mutex_);
  if (wakeUp_ >= 0) close(wakeUp_);
  wakeUpWritten_ = false;
  forks_ = bq::forkCount();
  wakeUp_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
}

void BQRunLoop::stop() {
  const std::lock_guard lock(mutex_);
  if (innermost_ == nullptr) return;
  innermost_->stop();
  if (sleepingIn_ != nullptr) interruptSleep();
}

void BQRunLoop::wakeUp() {
  const std::lock_guard lock(mutex_);
  wakeUpRequested_ = true;
  if (sleepingIn_ != nullptr) interruptSleep();
}

/* Under the lock. A child must not write to what its parent reads. */
void BQRunLoop::interruptSleep() {
  if (wakeUpWritten_ || forks_ != bq::forkCount()) return;
  wakeUpWritten_ = true;
  eventfd_write(wakeUp_, 1);
}

/* False if there is a reason not to. */
bool BQRunLoop::fallAsleep(Run& run) {
  const std::lock_guard lock(mutex_);
  if (std::exchange(wakeUpRequested_, false)) return false;
  if (run.isStopped() || run.mode().sources.hasPending()) return false;
  sleepingIn_ = &run.mode();
  return true;
}

void BQRunLoop::awake() {
  const std::lock_guard lock(mutex_);
  sleepingIn_ = nullptr;
  wakeUpRequested_ = false;
  eventfd_t count;
  if (std::exchange(wakeUpWritten_, false)) eventfd_read(wakeUp_, &count);
}

const BQString* BQRunLoop::copyCurrentMode() const {
  return innermost_ != nullptr ? static_cast<const BQString*>(BQRetain(innermost_->mode().name.get()))
                               : nullptr;
}

namespace {

bool isRunLoop(const BQRunLoop* runLoop) {
  return bq::isInstance(runLoop, BQRunLoopGetTypeID());
}

bool isString(const BQString* string) {
  return bq::isInstance(string, bq::kStringTypeID);
}

/* A borrowed pointer beside its owner, since access to the plain pointer needs no guard. */
thread_local BQRunLoop* currentLoop = nullptr;
thread_local bool threadEnds = false;

/*
 * Sources that are still there when the thread ends are let go without a call to their cancel
 * function: at this point what the function would work on may have gone before them.
 */
class ThreadLoop {
 public:
  ThreadLoop() : loop_(bq::Ref<BQRunLoop>::adopt(bq::makeObject<BQRunLoop>(BQRunLoopGetTypeID()))) {
    currentLoop = loop_.get();
  }
  ~ThreadLoop() {
    threadEnds = true;
    currentLoop = nullptr;
    loop_->end();
  }
  ThreadLoop(const ThreadLoop&) = delete;
  ThreadLoop& operator=(const ThreadLoop&) = delete;

 private:
  bq::Ref<BQRunLoop> loop_;
};

}  // namespace

namespace bq {

RunLoopMode* findMode(BQRunLoop* runLoop, const BQString* name) {
  return isRunLoop(runLoop) && isString(name) ? runLoop->findMode(name) : nullptr;
}

RunLoopMode* findOrCreateMode(BQRunLoop* runLoop, const BQString* name) {
  return isRunLoop(runLoop) && isString(name) ? runLoop->findOrCreateMode(name) : nullptr;
}

}  // namespace bq

BQ_DEFINE_STRING(kBQRunLoopDefaultMode, "kBQRunLoopDefaultMode");

BQTypeID BQRunLoopGetTypeID(void) {
  static const BQRuntimeClass runLoopClass = {
      .version = 0,
      .className = "BQRunLoop",
      .init = nullptr,
      .copy = nullptr,
      .finalize = bq::finalizeObject<BQRunLoop>,
      .equal = nullptr,
      .hash = nullptr,
      .copyFormattingDesc = nullptr,
      .copyDebugDesc = nullptr,
  };
  static const BQTypeID typeID = _BQRuntimeRegisterClass(&runLoopClass);
  return typeID;
}

BQRunLoop* BQRunLoopGetCurrent(void) {
  if (currentLoop != nullptr || threadEnds) return currentLoop;
  thread_local ThreadLoop owner;
  return currentLoop;
}

const BQString* BQRunLoopCopyCurrentMode(BQRunLoop* runLoop) {
  return isRunLoop(runLoop) ? runLoop->copyCurrentMode() : nullptr;
}

BQRunLoopRunResult BQRunLoopRunInMode(const BQString* mode, BQTimeInterval seconds,
                                      bool returnAfterSourceHandled) {
  BQRunLoop* runLoop = BQRunLoopGetCurrent();
  if (runLoop == nullptr || !isString(mode)) return kBQRunLoopRunFinished;
  return runLoop->run(mode, seconds, returnAfterSourceHandled);
}

void BQRunLoopRun(void) {
  constexpr BQTimeInterval kNoLimit = 1e30;
  BQRunLoopRunInMode(kBQRunLoopDefaultMode, kNoLimit, false);
}

void BQRunLoopStop(BQRunLoop* runLoop) {
  if (isRunLoop(runLoop)) runLoop->stop();
}

void BQRunLoopWakeUp(BQRunLoop* runLoop) {
  if (isRunLoop(runLoop)) runLoop->wakeUp();
}
