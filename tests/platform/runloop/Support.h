/* Objects of a run loop whose callbacks are lambdas. */
#ifndef BQ_TESTS_RUNLOOP_SUPPORT_H
#define BQ_TESTS_RUNLOOP_SUPPORT_H

#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

#include "platform/runloop/Clock.h"
#include "support/PlatformValues.h"

BQ_DEFINE_STATIC_STRING(kMode, "a");
BQ_DEFINE_STATIC_STRING(kOtherMode, "b");

inline constexpr double kNoLimit = 1e30;

/* One pass that does not wait. */
inline BQRunLoopRunResult runOnce(const BQString* mode = kMode) {
  return BQRunLoopRunInMode(mode, 0, false);
}

/* A source, timer or descriptor. */
class Item {
 public:
  explicit Item(std::function<void()> call) : call_(std::move(call)) {}
  virtual ~Item() = default;

  virtual void add(const BQString* mode = kMode) = 0;
  virtual void remove(const BQString* mode = kMode) = 0;
  virtual void invalidate() = 0;
  /* Gives up the reference of the test. */
  virtual void release() = 0;

  int calls = 0;
  uint32_t lastReady = 0;
  /* Called with "+" or "-" and the mode in which a source is scheduled or cancelled; "~" when a context ends.
   */
  std::function<void(const std::string&)> told = [](const std::string&) {};

 protected:
  /* The item is what `retain` gives instead of the info, which tests that every function gets that. */
  template <class Context>
  Context makeContext() {
    Context context = {};
    context.info = &self_;
    context.retain = [](const void* info) -> const void* { return *static_cast<Item* const*>(info); };
    context.release = [](const void* info) { of(info).told("~"); };
    return context;
  }
  static Item& of(const void* info) { return *static_cast<Item*>(const_cast<void*>(info)); }
  static void callBack(void* info) {
    ++of(info).calls;
    if (of(info).call_) of(info).call_();
  }

 private:
  std::function<void()> call_;
  Item* self_ = this;
};

template <class Object, auto kAdd, auto kRemove, auto kInvalidate>
class ItemOf : public Item {
 public:
  using Item::Item;
  ~ItemOf() override { kInvalidate(get()); }

  Object* get() const { return object_.get(); }
  void add(const BQString* mode = kMode) override { kAdd(BQRunLoopGetCurrent(), get(), mode); }
  void remove(const BQString* mode = kMode) override { kRemove(BQRunLoopGetCurrent(), get(), mode); }
  void invalidate() override { kInvalidate(get()); }
  void release() override { object_ = nullptr; }

 protected:
  bq::Ref<Object> object_;
};

class Source
    : public ItemOf<BQRunLoopSource, BQRunLoopAddSource, BQRunLoopRemoveSource, BQRunLoopSourceInvalidate> {
 public:
  explicit Source(std::function<void()> perform = {}, BQIndex order = 0) : ItemOf(std::move(perform)) {
    auto context = makeContext<BQRunLoopSourceContext>();
    context.schedule = [](void* info, BQRunLoop*, const BQString* m) {
      of(info).told("+" + values::text(m));
    };
    context.cancel = [](void* info, BQRunLoop*, const BQString* m) { of(info).told("-" + values::text(m)); };
    context.perform = callBack;
    object_ = values::own(BQRunLoopSourceCreate(order, &context));
  }

  void signal() { BQRunLoopSourceSignal(get()); }
};

/* A timer at seconds from now. */
class Timer
    : public ItemOf<BQRunLoopTimer, BQRunLoopAddTimer, BQRunLoopRemoveTimer, BQRunLoopTimerInvalidate> {
 public:
  explicit Timer(double delay, double interval = 0, std::function<void()> fire = {})
      : ItemOf(std::move(fire)) {
    const auto context = makeContext<BQRunLoopTimerContext>();
    const auto callback = [](BQRunLoopTimer*, void* info) { callBack(info); };
    object_ = values::own(BQRunLoopTimerCreate(now() + delay, interval, 0, 0, callback, &context));
  }

  static BQAbsoluteTime now() { return bq::absoluteTimeOf(bq::monotonicTime()); }
  void setDate(BQAbsoluteTime date) { BQRunLoopTimerSetNextFireDate(get(), date); }
};

/* The fd stays the test's. */
class Descriptor : public ItemOf<BQFileDescriptor, BQRunLoopAddFileDescriptor, BQRunLoopRemoveFileDescriptor,
                                 BQFileDescriptorInvalidate> {
 public:
  Descriptor(int fd, uint32_t interest, std::function<void()> call = {}) : ItemOf(std::move(call)) {
    const auto callback = [](BQFileDescriptor*, uint32_t ready, void* info) {
      of(info).lastReady = ready;
      callBack(info);
    };
    object_ = values::own(BQFileDescriptorCreate(fd, interest, callback, static_cast<Item*>(this)));
  }
};

/* Two connected sockets. */
struct SocketPair {
  SocketPair() {
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, fds) != 0) std::abort();
  }
  ~SocketPair() { close(fds[0]), close(fds[1]); }

  int fds[2];
};

/* Time that passes only while the loop would wait, for the life of the object. */
struct SimulatedTime : bq::ClockForTesting {
  SimulatedTime() : ClockForTesting{0, 700'000'000'000'000'000} { bq::setClockForTesting(this); }
  ~SimulatedTime() { bq::setClockForTesting(nullptr); }
  /* Seconds since the start. */
  double elapsed() const { return static_cast<double>(monotonic) / 1e9; }
};

#endif
