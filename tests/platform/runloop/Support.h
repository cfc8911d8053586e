/* Objects of a run loop whose callbacks are lambdas. */
#ifndef BQ_TESTS_RUNLOOP_SUPPORT_H
#define BQ_TESTS_RUNLOOP_SUPPORT_H

#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <utility>

#include "platform/runloop/Clock.h"
#include "support/PlatformValues.h"

BQ_DEFINE_STATIC_STRING(kMode, "a mode");
BQ_DEFINE_STATIC_STRING(kOtherMode, "another mode");

inline constexpr double kNoLimit = 1e30;

inline BQRunLoop* currentLoop() {
  return BQRunLoopGetCurrent();
}

/* One pass that does not wait. */
inline BQRunLoopRunResult runOnce(const BQString* mode = kMode) {
  return BQRunLoopRunInMode(mode, 0, false);
}

/* What sources, timers and descriptors have in common. */
template <class Self, class Object, auto kAdd, auto kRemove, auto kInvalidate>
class Item {
 public:
  explicit Item(std::function<void()> call) : call_(std::move(call)) {}
  ~Item() { invalidate(); }
  Item(const Item&) = delete;
  Item& operator=(const Item&) = delete;

  Object* get() const { return object_.get(); }
  Self& add(const BQString* mode = kMode) {
    kAdd(currentLoop(), get(), mode);
    return static_cast<Self&>(*this);
  }
  void remove(const BQString* mode = kMode) { kRemove(currentLoop(), get(), mode); }
  void invalidate() { kInvalidate(get()); }
  /* Gives up the reference of the test. */
  void release() { object_ = nullptr; }

  int calls = 0;

 protected:
  void callBack() {
    ++calls;
    if (call_) call_();
  }

  bq::Ref<Object> object_;

 private:
  std::function<void()> call_;
};

class Source : public Item<Source, BQRunLoopSource, BQRunLoopAddSource, BQRunLoopRemoveSource,
                           BQRunLoopSourceInvalidate> {
 public:
  explicit Source(std::function<void()> perform = {}, BQIndex order = 0) : Item(std::move(perform)) {
    BQRunLoopSourceContext context = {};
    context.info = this;
    context.perform = [](void* info) { static_cast<Source*>(info)->callBack(); };
    object_ = values::own(BQRunLoopSourceCreate(order, &context));
  }

  void signal() { BQRunLoopSourceSignal(get()); }
};

/* A timer at seconds from now. */
class Timer
    : public Item<Timer, BQRunLoopTimer, BQRunLoopAddTimer, BQRunLoopRemoveTimer, BQRunLoopTimerInvalidate> {
 public:
  Timer(double delay, double interval, std::function<void()> fire = {}) : Item(std::move(fire)) {
    BQRunLoopTimerContext context = {};
    context.info = this;
    const auto callback = [](BQRunLoopTimer*, void* info) { static_cast<Timer*>(info)->callBack(); };
    object_ = values::own(BQRunLoopTimerCreate(now() + delay, interval, 0, 0, callback, &context));
  }

  static BQAbsoluteTime now() { return bq::absoluteTimeOf(bq::monotonicTime()); }
  void setDate(BQAbsoluteTime date) { BQRunLoopTimerSetNextFireDate(get(), date); }
};

/* The fd stays the test's. */
class Descriptor : public Item<Descriptor, BQFileDescriptor, BQRunLoopAddFileDescriptor,
                               BQRunLoopRemoveFileDescriptor, BQFileDescriptorInvalidate> {
 public:
  Descriptor(int fd, uint32_t interest, std::function<void()> call = {}) : Item(std::move(call)) {
    const auto callback = [](BQFileDescriptor*, uint32_t ready, void* info) {
      static_cast<Descriptor*>(info)->lastReady = ready;
      static_cast<Descriptor*>(info)->callBack();
    };
    object_ = values::own(BQFileDescriptorCreate(fd, interest, callback, this));
  }

  void setInterest(uint32_t interest) { BQFileDescriptorSetInterest(get(), interest); }

  uint32_t lastReady = 0;
};

/* Two connected sockets. */
class SocketPair {
 public:
  SocketPair() {
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, fds_) != 0) fds_[0] = fds_[1] = -1;
  }
  ~SocketPair() {
    close(fds_[0]);
    closePeer();
  }
  SocketPair(const SocketPair&) = delete;
  SocketPair& operator=(const SocketPair&) = delete;

  int fd() const { return fds_[0]; }
  bool send() { return write(fds_[1], "x", 1) == 1; }
  bool receive() {
    char byte;
    return read(fds_[0], &byte, 1) == 1;
  }
  void closePeer() {
    if (fds_[1] >= 0) close(fds_[1]);
    fds_[1] = -1;
  }

 private:
  int fds_[2];
};

/* Time that passes only while the loop would wait, for the life of the object. */
class SimulatedTime {
 public:
  SimulatedTime() { bq::setClockForTesting(&clock_); }
  ~SimulatedTime() { bq::setClockForTesting(nullptr); }
  SimulatedTime(const SimulatedTime&) = delete;
  SimulatedTime& operator=(const SimulatedTime&) = delete;

  /* Seconds since the start. */
  double elapsed() const { return static_cast<double>(clock_.monotonic - kStart) / 1e9; }
  void advance(double seconds) { clock_.advance(bq::nanosecondsOf(seconds)); }

 private:
  static constexpr bq::Nanoseconds kStart = 1'000'000'000'000;
  bq::ClockForTesting clock_{kStart, 700'000'000'000'000'000};
};

#endif
