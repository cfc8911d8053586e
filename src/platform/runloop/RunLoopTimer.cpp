#include "platform/runloop/RunLoopTimer.h"

#include <algorithm>
#include <atomic>

#include "platform/runloop/ContextDescription.h"
#include "platform/runloop/RunLoop.h"
#include "platform/runloop/RunLoopMode.h"

using bq::Nanoseconds;

namespace {

std::atomic<uint64_t> createdTimers{0};

/* The first firing after `now` in the rhythm of the timer. */
Nanoseconds skipMissedFirings(Nanoseconds deadline, Nanoseconds interval, Nanoseconds now) {
  const auto late = static_cast<uint64_t>(now) - static_cast<uint64_t>(deadline);
  const auto past = static_cast<Nanoseconds>(late % static_cast<uint64_t>(interval));
  return bq::addClamped(now, interval - past);
}

bool isTimer(const BQRunLoopTimer* timer) {
  return bq::isInstance(timer, BQRunLoopTimerGetTypeID());
}

const BQString* copyTimerDescription(BQTypeRef object) {
  return static_cast<const BQRunLoopTimer*>(object)->copyDescription();
}

}  // namespace

BQRunLoopTimer::BQRunLoopTimer(BQTypeID typeID, Nanoseconds deadline, Nanoseconds interval,
                               BQRunLoopTimerCallBack callback, const BQRunLoopTimerContext* context)
    : Object(typeID),
      deadline_(deadline),
      interval_(interval),
      creationNumber_(createdTimers.fetch_add(1, std::memory_order_relaxed)),
      callback_(callback) {
  if (context == nullptr) return;
  context_ = *context;
  if (context_.retain != nullptr) context_.info = const_cast<void*>(context_.retain(context_.info));
}

BQRunLoopTimer::~BQRunLoopTimer() {
  if (context_.release != nullptr) context_.release(context_.info);
}

const BQString* BQRunLoopTimer::copyDescription() const {
  return bq::copyContextDescription("BQRunLoopTimer", this, context_.copyDescription, context_.info);
}

void BQRunLoopTimer::updateModes() {
  for (const auto& entry : entries_) entry->mode->timers.update(*entry);
}

void BQRunLoopTimer::setDeadline(Nanoseconds deadline) {
  deadline_ = deadline;
  updateModes();
}

void BQRunLoopTimer::setFiring(bool firing) {
  firing_ = firing;
  updateModes();
}

void BQRunLoopTimer::addTo(bq::RunLoopMode& mode) {
  if (!valid_ || isIn(mode)) return;
  if (!entries_.empty() && &entries_.front()->mode->loop != &mode.loop) return;
  entries_.push_back(std::make_unique<bq::TimerEntry>(
      bq::TimerEntry{.timer = bq::Ref<BQRunLoopTimer>::retain(this), .mode = &mode}));
  mode.timers.insert(*entries_.back());
}

std::unique_ptr<bq::TimerEntry> BQRunLoopTimer::removeFrom(bq::RunLoopMode& mode) {
  for (auto& entry : entries_) {
    if (entry->mode != &mode) continue;
    mode.timers.remove(*entry);
    std::swap(entry, entries_.back());
    auto removed = std::move(entries_.back());
    entries_.pop_back();
    return removed;
  }
  return nullptr;
}

bool BQRunLoopTimer::isIn(const bq::RunLoopMode& mode) const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [&mode](const auto& entry) { return entry->mode == &mode; });
}

void BQRunLoopTimer::invalidate() {
  valid_ = false;
  for (const auto& entry : entries_) entry->mode->timers.remove(*entry);
  /* The references that go here may be the last ones to the timer itself. */
  const auto removed = std::move(entries_);
}

void BQRunLoopTimer::fire(Nanoseconds now) {
  if (interval_ > 0) deadline_ = skipMissedFirings(deadline_, interval_, now);
  setFiring(true);
  callback_(this, context_.info);
  if (!valid_) return;
  if (interval_ > 0) {
    setFiring(false);
  } else {
    invalidate();
  }
}

BQTypeID BQRunLoopTimerGetTypeID(void) {
  static const BQRuntimeClass timerClass = {
      .version = 0,
      .className = "BQRunLoopTimer",
      .init = nullptr,
      .copy = nullptr,
      .finalize = bq::finalizeObject<BQRunLoopTimer>,
      .equal = nullptr,
      .hash = nullptr,
      .copyFormattingDesc = nullptr,
      .copyDebugDesc = copyTimerDescription,
  };
  static const BQTypeID typeID = _BQRuntimeRegisterClass(&timerClass);
  return typeID;
}

BQRunLoopTimer* BQRunLoopTimerCreate(BQAbsoluteTime fireDate, BQTimeInterval interval, uint32_t, BQIndex,
                                     BQRunLoopTimerCallBack callback, const BQRunLoopTimerContext* context) {
  if (callback == nullptr || (context != nullptr && context->version != 0)) return nullptr;
  const Nanoseconds period = interval > 0 ? std::max<Nanoseconds>(bq::nanosecondsOf(interval), 1) : 0;
  return bq::makeObject<BQRunLoopTimer>(BQRunLoopTimerGetTypeID(), bq::monotonicTimeOf(fireDate), period,
                                        callback, context);
}

void BQRunLoopTimerInvalidate(BQRunLoopTimer* timer) {
  if (isTimer(timer)) timer->invalidate();
}

bool BQRunLoopTimerIsValid(const BQRunLoopTimer* timer) {
  return isTimer(timer) && timer->isValid();
}

BQAbsoluteTime BQRunLoopTimerGetNextFireDate(const BQRunLoopTimer* timer) {
  return isTimer(timer) ? bq::absoluteTimeOf(timer->deadline()) : 0;
}

void BQRunLoopTimerSetNextFireDate(BQRunLoopTimer* timer, BQAbsoluteTime fireDate) {
  if (isTimer(timer) && timer->isValid()) timer->setDeadline(bq::monotonicTimeOf(fireDate));
}

void BQRunLoopAddTimer(BQRunLoop* runLoop, BQRunLoopTimer* timer, const BQString* mode) {
  if (!isTimer(timer)) return;
  if (bq::RunLoopMode* found = bq::findOrCreateMode(runLoop, mode)) timer->addTo(*found);
}

void BQRunLoopRemoveTimer(BQRunLoop* runLoop, BQRunLoopTimer* timer, const BQString* mode) {
  if (!isTimer(timer)) return;
  if (bq::RunLoopMode* found = bq::findMode(runLoop, mode)) timer->removeFrom(*found);
}

bool BQRunLoopContainsTimer(BQRunLoop* runLoop, BQRunLoopTimer* timer, const BQString* mode) {
  if (!isTimer(timer)) return false;
  const bq::RunLoopMode* found = bq::findMode(runLoop, mode);
  return found != nullptr && timer->isIn(*found);
}
