/*
 * Plays the rows of scenarios.txt, which explains its language, on simulated time. The tests after that are
 * what scenarios cannot say: the order of many, the system's clock, equality, other threads.
 */
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <thread>
#include <vector>

#include "platform/runloop/Clock.h"
#include "support/PlatformValues.h"

namespace {

BQ_DEFINE_STATIC_STRING(kMode, "a");
BQ_DEFINE_STATIC_STRING(kOtherMode, "b");

constexpr double kNoLimit = 1e30;

/* One pass that does not wait. */
BQRunLoopRunResult runOnce(const BQString* mode = kMode) {
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
  /* Gives up the reference of the test. The object stays known while it ends. */
  void release() {
    BQRelease(object_.get());
    static_cast<void>(object_.release());
  }
  void use() { BQRelease(BQRetain(object_.get())); }

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

  values::Value object_;

 private:
  std::function<void()> call_;
  Item* self_ = this;
};

template <class Object, auto kAdd, auto kRemove, auto kInvalidate>
class ItemOf : public Item {
 public:
  using Item::Item;
  ~ItemOf() override { kInvalidate(get()); }

  Object* get() const { return static_cast<Object*>(const_cast<void*>(object_.get())); }
  void add(const BQString* mode = kMode) override { kAdd(BQRunLoopGetCurrent(), get(), mode); }
  void remove(const BQString* mode = kMode) override { kRemove(BQRunLoopGetCurrent(), get(), mode); }
  void invalidate() override { kInvalidate(get()); }
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

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream >> std::ws, part, separator);) parts.push_back(part);
  return parts;
}

double number(const std::string& word) {
  return std::atof(word.c_str());
}

void limitFiles(double most) {
  rlimit limit;
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = std::min(static_cast<rlim_t>(most), limit.rlim_max);
  setrlimit(RLIMIT_NOFILE, &limit);
}

/* What DUE stands for: a row with it is played with each. */
constexpr const char* kDue[] = {
    "x=source; y=source; signal x; signal y", "x=timer -1; y=timer -1",     "x=timer -1 30; y=timer -1 30",
    "x=fd r; y=fd r; send x; send y",         "x=fd r S; y=fd r S; send x",
};

uint32_t readiness(const std::string& letters) {
  return letters.empty() ? 0 : letters == "r" ? 1 : letters == "w" ? 2 : 3;
}

class Scenario {
 public:
  std::string play(const std::string& script) {
    for (const std::string& statement : split(script, ';')) execute(statement);
    return log_.str().substr(1);
  }

 private:
  /* With the time if it is not that of the entry before. */
  void note(const std::string& entry) {
    log_ << " " << entry;
    if (time_.elapsed() != notedTime_) log_ << "@" << (notedTime_ = time_.elapsed());
  }

  void execute(const std::string& statement) {
    std::istringstream words(statement);
    std::string verb, name, detail;
    words >> verb >> name >> detail;
    if (statement.find(':') != std::string::npos) {
      handlers_[name.substr(0, name.find(':'))] = statement;
    } else if (verb.find('=') != std::string::npos) {
      define(statement.substr(0, statement.find('=')), statement.substr(statement.find('=') + 1));
    } else {
      act(verb, name, detail);
    }
  }

  void act(const std::string& verb, const std::string& name, const std::string& detail) {
    const auto text = values::mutableString(detail.empty() ? "a" : detail);
    const BQString* mode = detail == "default" ? kBQRunLoopDefaultMode : text.get();
    Item* item = items_[name].get();
    auto* source = dynamic_cast<Source*>(item);
    auto* timer = dynamic_cast<Timer*>(item);
    const auto run = [&](bool returnAfterSourceHandled) {
      static const char* const results[] = {"", "finished", "stopped", "timeout", "handled"};
      note(results[BQRunLoopRunInMode(mode, number(name), returnAfterSourceHandled)]);
    };
    char byte;
    const std::map<std::string, std::function<void()>> actions = {
        {"add", [&] { item->add(mode); }},
        {"remove", [&] { item->remove(mode); }},
        {"invalidate", [&] { item->invalidate(); }},
        {"release", [&] { item->release(); }},
        {"use", [&] { item->use(); }},
        {"signal", [&] { source->signal(); }},
        {"valid",
         [&] {
           note((timer ? BQRunLoopTimerIsValid(timer->get()) : BQRunLoopSourceIsValid(source->get()))
                    ? "valid"
                    : "invalid");
         }},
        {"date", [&] { timer->setDate(Timer::now() + number(detail)); }},
        {"next", [&] { log_ << " +" << BQRunLoopTimerGetNextFireDate(timer->get()) - Timer::now(); }},
        {"interest",
         [&] { BQFileDescriptorSetInterest(dynamic_cast<Descriptor*>(item)->get(), readiness(detail)); }},
        {"send", [&] { EXPECT_EQ(write(sockets_[name]->fds[1], "x", 1), 1); }},
        {"receive", [&] { EXPECT_EQ(read(sockets_[name]->fds[0], &byte, 1), 1); }},
        {"hangup", [&] { close(std::exchange(sockets_[name]->fds[1], -1)); }},
        {"close", [&] { closedNumber_ = sockets_[name]->fds[0], sockets_.erase(name); }},
        {"limit", [&] { limitFiles(number(name)); }},
        {"run", [&] { run(false); }},
        {"serve", [&] { run(true); }},
        {"runall", [] { BQRunLoopRun(); }},
        {"stop", [] { BQRunLoopStop(BQRunLoopGetCurrent()); }},
        {"wake", [] { BQRunLoopWakeUp(BQRunLoopGetCurrent()); }},
        {"mode", [&] { note(values::text(values::own(BQRunLoopCopyCurrentMode(BQRunLoopGetCurrent())))); }},
        {"advance", [&] { time_.advance(bq::nanosecondsOf(number(name))); }},
    };
    actions.at(verb)();
    BQStringAppend(text.get(), BQSTR(" that changed later"));
  }

  void define(const std::string& name, const std::string& definition) {
    std::istringstream words(definition);
    std::string kind, first, second, loud;
    words >> kind >> first >> second >> loud;
    auto& item = items_[name];
    const auto call = [this, name] { answer(name); };
    if (kind == "timer") {
      item = std::make_unique<Timer>(number(first), number(second), call);
    } else if (kind == "source") {
      item = std::make_unique<Source>(call, static_cast<BQIndex>(number(first)));
    } else {
      static const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
      auto& sockets = sockets_[second.empty() ? name : second];
      if (sockets == nullptr) sockets = std::make_shared<SocketPair>();
      sockets_[name] = sockets;
      const int fd = kind == "fd" ? sockets->fds[0] : null;
      EXPECT_TRUE(closedNumber_ < 0 || closedNumber_ == fd) << "the lowest free number is used first";
      item = std::make_unique<Descriptor>(fd, readiness(first), call);
    }
    if (loud == "loud")
      item->told = [this, name](const std::string& event) {
        note(name + event);
        handle(handlers_[name + event]);
      };
    item->add();
  }

  void answer(const std::string& name) {
    static const char* const suffixes[] = {"", "", ":w", ":rw"};
    note(name + suffixes[items_[name]->lastReady]);
    const std::string handler = handlers_[name];
    if (!handler.starts_with("once") || items_[name]->calls == 1) handle(handler);
  }

  void handle(const std::string& handler) {
    for (const std::string& part : split(handler.substr(handler.find(':') + 1), ',')) execute(part);
  }

  SimulatedTime time_;
  double notedTime_ = 0;
  std::ostringstream log_;
  int closedNumber_ = -1;
  std::map<std::string, std::string> handlers_;
  std::map<std::string, std::shared_ptr<SocketPair>> sockets_;
  std::map<std::string, std::unique_ptr<Item>> items_;
};

TEST(Scenarios, HaveTheirOutcome) {
  std::ifstream file(SCENARIOS);
  int rows = 0;
  for (std::string line, rest; std::getline(file, line);) {
    while (line.ends_with('\\') && std::getline(file >> std::ws, rest))
      line.replace(line.size() - 1, 1, rest);
    const size_t bar = line.find(" | "), arrow = line.find(" => ");
    if (line.starts_with('#') || arrow == std::string::npos) continue;
    std::cout << line.substr(0, bar) << std::endl; /* the last is that of a row that hangs */
    for (const char* due : kDue) {
      std::string script = line.substr(bar + 3, arrow - bar - 3);
      const bool isVaried = script.starts_with("DUE");
      if (isVaried) script.replace(0, 3, due);
      /* A thread of its own, and with it a loop. */
      std::thread([&] { EXPECT_EQ(Scenario().play(script), line.substr(arrow + 4)) << line << due; }).join();
      ++rows;
      if (!isVaried) break;
    }
  }
  EXPECT_GT(rows, 0);
}

/* By the system's clock all are due at once: it is read again for each, and equal dates must stay equal. */
TEST(RunLoop, ManyAreServedInOrder) {
  for (const bool isSimulated : {true, false}) {
    const auto time = isSimulated ? std::make_unique<SimulatedTime>() : nullptr;
    const BQAbsoluteTime start = Timer::now() - (isSimulated ? 0 : 200);
    std::mt19937 random(1);
    std::deque<Timer> timers;
    std::deque<Source> sources;
    std::vector<int> keys;
    std::vector<std::pair<int, int>> expected, fired, performed;
    for (int index = 0; index < 1000; ++index) {
      const int key = keys.emplace_back(random() % 100);
      timers.emplace_back(random() % 100, 0, [&fired, key, index] { fired.emplace_back(key, index); });
      sources.emplace_back([&performed, key, index] { performed.emplace_back(key, index); }, key);
      timers.back().add();
      sources.back().add();
    }
    for (int index = 0; index < 1000; ++index) {
      timers[index].setDate(start + keys[index]);
      sources[index].signal();
      if (index % 3 != 0) expected.emplace_back(keys[index], index);
      if (index % 3 == 0) timers[index].invalidate(), sources[index].invalidate();
    }
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, true), kBQRunLoopRunHandledSource);
    EXPECT_EQ(performed, expected);
    BQRunLoopRunInMode(kMode, isSimulated ? 100 : 0, false);
    EXPECT_EQ(fired, expected);
  }
}

TEST(RunLoop, ContextDecidesWhichSourcesAreEqual) {
  int numbers[] = {1, 1, 2};
  BQRunLoopSourceContext context = {};
  const auto areEqual = [&](int* info, BQIndex order = 0) {
    context.info = numbers;
    const auto source = values::own(BQRunLoopSourceCreate(0, &context));
    context.info = info;
    const auto other = values::own(BQRunLoopSourceCreate(order, &context));
    return BQEqual(source.get(), other.get()) && BQHash(source.get()) == BQHash(other.get());
  };
  EXPECT_FALSE(areEqual(&numbers[0])) << "without a function, by identity";
  context.equal = [](const void* first, const void* second) {
    return *static_cast<const int*>(first) == *static_cast<const int*>(second);
  };
  EXPECT_TRUE(areEqual(&numbers[1]));
  EXPECT_FALSE(areEqual(&numbers[1], 1) || areEqual(&numbers[2]));
}

/*
 * Signals come while the loop performs, runs inside a perform, or is on its way to sleep. A producer whose
 * signal was lost would wait for ever.
 */
TEST(Threads, WakeALoopThatSleeps) {
  for (int run = 0; run < 100; ++run) {
    const BQString* mode = run % 2 == 0 ? kMode : kOtherMode;
    std::atomic<int> produced{0}, seen{0};
    Source source([&] {
      if (seen % 8 == 0) runOnce(mode);
      seen = produced.load();
      for (std::atomic<int> delay{seen % 100}; delay > 0;) --delay;
    });
    source.add(kMode), source.add(kOtherMode);
    std::jthread producer([&, loop = BQRunLoopGetCurrent()] {
      while (produced < 100) {
        const int ticket = ++produced;
        source.signal();
        while (ticket % 8 != 0 && seen < ticket) continue;
      }
      BQRunLoopStop(loop);
    });
    EXPECT_EQ(BQRunLoopRunInMode(mode, kNoLimit, false), kBQRunLoopRunStopped);
  }
  SimulatedTime time;
  Timer timer(9);
  timer.add();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, 5, false), kBQRunLoopRunTimedOut);
  EXPECT_EQ(time.elapsed(), 5) << "the wake-up was used up";
}

TEST(Threads, SignalsWhileTheSourceMovesAndItsThreadEnds) {
  for (int round = 0; round < 10; ++round) {
    const bool isInvalidated = round % 2 == 0;
    Source source([] { runOnce(); });
    std::jthread signaller([&](const std::stop_token& stop) {
      while (!stop.stop_requested()) source.signal();
    });
    std::thread([&] {
      for (const BQString* mode : {kMode, kOtherMode, kMode}) {
        source.add(mode);
        for (source.calls = 0; source.calls == 0;) runOnce(mode);
        source.remove(mode);
      }
      source.add();
      if (isInvalidated) source.invalidate();
    }).join();
    signaller.request_stop();
    signaller.join();
    EXPECT_EQ(BQGetRetainCount(source.get()), 1);
    source.calls = 0;
    source.add();
    source.signal();
    for (int pass = 0; pass < 2; ++pass) runOnce();
    EXPECT_EQ(source.calls, isInvalidated ? 0 : 1);
  }
}

TEST(Threads, LoopThatIsHeldOutlivesItsThreadHarmlessly) {
  bq::Ref<BQRunLoop> loop;
  std::string told;
  Source source;
  source.told = [&](const std::string& event) { told += event; };
  Timer timer(3600);
  SocketPair sockets;
  Descriptor descriptor(sockets.fds[0], kBQFileDescriptorRead);
  std::thread([&] {
    loop = bq::Ref<BQRunLoop>::retain(BQRunLoopGetCurrent());
    source.add(), source.add(kOtherMode), timer.add(), descriptor.add();
    source.signal();
    EXPECT_EQ(BQGetRetainCount(source.get()), 3);
    EXPECT_TRUE(BQRunLoopContainsSource(loop.get(), source.get(), kMode));
    EXPECT_TRUE(BQRunLoopContainsTimer(loop.get(), timer.get(), kMode));
  }).join();
  EXPECT_EQ(told, "+a+b") << "its cancel function is not called";
  EXPECT_EQ(BQGetRetainCount(source.get()), 1);
  EXPECT_FALSE(BQRunLoopContainsTimer(loop.get(), timer.get(), kMode));
  source.signal();
  BQRunLoopWakeUp(loop.get());
  BQRunLoopStop(loop.get());
  BQRunLoopAddSource(loop.get(), source.get(), kMode);
  EXPECT_FALSE(BQRunLoopContainsSource(loop.get(), source.get(), kMode));
  EXPECT_EQ(write(sockets.fds[1], "x", 1), 1);
  timer.add();
  descriptor.add();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, true), kBQRunLoopRunHandledSource)
      << "what was on the loop may join another";
}

TEST(Threads, NoLoopIsMadeWhenTheThreadHasLostItsOwn) {
  static std::atomic<bool> foundNothing{false};
  struct LateUser {
    ~LateUser() { foundNothing = BQRunLoopGetCurrent() == nullptr && runOnce() == kBQRunLoopRunFinished; }
  };
  std::thread([] {
    thread_local LateUser user; /* made before the thread's loop, so destroyed after it */
    EXPECT_NE(BQRunLoopGetCurrent(), nullptr);
  }).join();
  EXPECT_TRUE(foundNothing);
}

}  // namespace
