/* Objects of a run loop whose callbacks are lambdas. */
#ifndef BQ_TESTS_RUNLOOP_SUPPORT_H
#define BQ_TESTS_RUNLOOP_SUPPORT_H

#include <BQ/BQDate.h>
#include <BQ/BQRunLoop.h>
#include <BQ/BQString.h>

#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <utility>

#include "platform/object/Object.h"
#include "platform/runloop/Clock.h"

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

/* A source that performs a lambda. */
class Source {
 public:
  explicit Source(std::function<void()> perform = {}, BQIndex order = 0) : perform_(std::move(perform)) {
    BQRunLoopSourceContext context = {};
    context.info = this;
    context.perform = [](void* info) {
      auto* self = static_cast<Source*>(info);
      ++self->performed;
      if (self->perform_) self->perform_();
    };
    source_ = bq::Ref<BQRunLoopSource>::adopt(BQRunLoopSourceCreate(order, &context));
  }
  ~Source() { BQRunLoopSourceInvalidate(get()); }
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  BQRunLoopSource* get() const { return source_.get(); }
  Source& add(const BQString* mode = kMode) {
    BQRunLoopAddSource(currentLoop(), get(), mode);
    return *this;
  }
  void remove(const BQString* mode = kMode) { BQRunLoopRemoveSource(currentLoop(), get(), mode); }
  void signal() { BQRunLoopSourceSignal(get()); }
  /* Gives up the reference of the test. */
  void release() { source_ = nullptr; }

  int performed = 0;

 private:
  std::function<void()> perform_;
  bq::Ref<BQRunLoopSource> source_;
};

/* A timer that calls a lambda, at seconds from now. */
class Timer {
 public:
  Timer(double delay, double interval, std::function<void()> fire = {}) : fire_(std::move(fire)) {
    BQRunLoopTimerContext context = {};
    context.info = this;
    const auto callback = [](BQRunLoopTimer*, void* info) {
      auto* self = static_cast<Timer*>(info);
      ++self->fired;
      if (self->fire_) self->fire_();
    };
    timer_ = bq::Ref<BQRunLoopTimer>::adopt(
        BQRunLoopTimerCreate(now() + delay, interval, 0, 0, callback, &context));
  }
  ~Timer() { BQRunLoopTimerInvalidate(get()); }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  static BQAbsoluteTime now() { return bq::absoluteTimeOf(bq::monotonicTime()); }
  BQRunLoopTimer* get() const { return timer_.get(); }
  Timer& add(const BQString* mode = kMode) {
    BQRunLoopAddTimer(currentLoop(), get(), mode);
    return *this;
  }
  void release() { timer_ = nullptr; }

  int fired = 0;

 private:
  std::function<void()> fire_;
  bq::Ref<BQRunLoopTimer> timer_;
};

/* A descriptor that calls a lambda. The fd stays the test's. */
class Descriptor {
 public:
  Descriptor(int fd, uint32_t interest, std::function<void(uint32_t)> call = {}) : call_(std::move(call)) {
    const auto callback = [](BQFileDescriptor*, uint32_t ready, void* info) {
      auto* self = static_cast<Descriptor*>(info);
      ++self->called;
      self->lastReady = ready;
      if (self->call_) self->call_(ready);
    };
    descriptor_ = bq::Ref<BQFileDescriptor>::adopt(BQFileDescriptorCreate(fd, interest, callback, this));
  }
  ~Descriptor() { BQFileDescriptorInvalidate(get()); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  BQFileDescriptor* get() const { return descriptor_.get(); }
  Descriptor& add(const BQString* mode = kMode) {
    BQRunLoopAddFileDescriptor(currentLoop(), get(), mode);
    return *this;
  }
  void remove(const BQString* mode = kMode) { BQRunLoopRemoveFileDescriptor(currentLoop(), get(), mode); }
  void setInterest(uint32_t interest) { BQFileDescriptorSetInterest(get(), interest); }
  void release() { descriptor_ = nullptr; }

  int called = 0;
  uint32_t lastReady = 0;

 private:
  std::function<void(uint32_t)> call_;
  bq::Ref<BQFileDescriptor> descriptor_;
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
