#include <BQ/BQRunLoop.h>

#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "platform/runloop/Support.h"

namespace {

TEST(Timer, FiresAtItsDateAndThenInItsRhythm) {
  SimulatedTime time;
  std::vector<double> fired;
  Timer timer(2, 0.5, [&] { fired.push_back(time.elapsed()); });
  timer.add();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, 3.25, false), kBQRunLoopRunTimedOut);
  EXPECT_EQ(fired, (std::vector<double>{2, 2.5, 3}));
}

TEST(Timer, FiresOnceAndIsThenInvalid) {
  for (double interval : {0.0, -1.0, std::nan("")}) {
    SimulatedTime time;
    Timer timer(1, interval, [&] { EXPECT_TRUE(BQRunLoopTimerIsValid(timer.get())); });
    timer.add();
    EXPECT_EQ(BQRunLoopRunInMode(kMode, 10, false), kBQRunLoopRunFinished);
    EXPECT_EQ(timer.fired, 1);
    EXPECT_FALSE(BQRunLoopTimerIsValid(timer.get()));
    EXPECT_FALSE(BQRunLoopContainsTimer(currentLoop(), timer.get(), kMode));
  }
}

TEST(Timer, MissedFiringsAreSkippedAndTheRhythmKept) {
  SimulatedTime time;
  std::vector<double> fired;
  Timer timer(1, 1, [&] {
    fired.push_back(time.elapsed());
    if (fired.size() == 1) time.advance(2.5);
  });
  timer.add();
  time.advance(3.25);
  BQRunLoopRunInMode(kMode, 4, false);
  EXPECT_EQ(fired, (std::vector<double>{3.25, 5.75, 6, 7}));
}

TEST(Timer, FireOrderIsByDateThenByCreation) {
  SimulatedTime time;
  std::string order;
  Timer second(3, 0, [&] { order += '2'; });
  Timer third(3, 0, [&] { order += '3'; });
  Timer first(1, 0, [&] { order += '1'; });
  for (Timer* timer : {&third, &first, &second}) timer->add();
  time.advance(5);
  runOnce();
  EXPECT_EQ(order, "123");
}

TEST(Timer, EqualDatesAreEqualByTheSystemClockToo) {
  const BQAbsoluteTime date = Timer::now() - 1;
  std::vector<BQRunLoopTimer*> fired;
  std::vector<bq::Ref<BQRunLoopTimer>> timers;
  const auto callback = [](BQRunLoopTimer* timer, void* info) {
    static_cast<std::vector<BQRunLoopTimer*>*>(info)->push_back(timer);
  };
  BQRunLoopTimerContext context = {};
  context.info = &fired;
  for (int index = 0; index < 100; ++index) {
    timers.push_back(bq::Ref<BQRunLoopTimer>::adopt(BQRunLoopTimerCreate(date, 0, 0, 0, callback, &context)));
    EXPECT_EQ(BQRunLoopTimerGetNextFireDate(timers.back().get()), date);
  }
  for (auto timer = timers.rbegin(); timer != timers.rend(); ++timer) {
    BQRunLoopAddTimer(currentLoop(), timer->get(), kMode);
  }
  runOnce();
  ASSERT_EQ(fired.size(), timers.size());
  for (size_t index = 0; index < fired.size(); ++index) EXPECT_EQ(fired[index], timers[index].get());
}

TEST(Timer, ExtremeDatesAndIntervals) {
  const double kInfinity = std::numeric_limits<double>::infinity();
  const double kNotANumber = std::nan("");
  const struct {
    double date;
    double interval;
    int fired;
  } cases[] = {
      {-kInfinity, 0, 1}, {0, kInfinity, 1}, {0, 1e30, 1},        {0, 978307200, 1}, {kInfinity, 0, 0},
      {kInfinity, 1, 0},  {1e30, 0, 0},      {kNotANumber, 1, 0}, {-1e30, 1e10, 1},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(testing::Message() << test.date << " " << test.interval);
    SimulatedTime time;
    Timer timer(0, test.interval);
    BQRunLoopTimerSetNextFireDate(timer.get(), test.date);
    timer.add();
    BQRunLoopRunInMode(kMode, 100.5, false);
    EXPECT_EQ(timer.fired, test.fired);
  }
}

TEST(Timer, SetNextFireDateMovesItInEveryMode) {
  SimulatedTime time;
  Timer timer(1, 100);
  timer.add().add(kOtherMode);
  BQRunLoopTimerSetNextFireDate(timer.get(), Timer::now() + 50);
  EXPECT_NEAR(BQRunLoopTimerGetNextFireDate(timer.get()), Timer::now() + 50, 1e-6);
  BQRunLoopRunInMode(kMode, 49, false);
  BQRunLoopRunInMode(kOtherMode, 0.5, false);
  EXPECT_EQ(timer.fired, 0);
  BQRunLoopRunInMode(kOtherMode, 1, false);
  EXPECT_EQ(timer.fired, 1);
  BQRunLoopRunInMode(kMode, 1, false);
  EXPECT_EQ(timer.fired, 1) << "fired in one mode, it is not due in the other";
}

TEST(Timer, FiresOncePerPassHoweverOftenItIsSetBack) {
  SimulatedTime time;
  Timer timer(0, 1, [&] { BQRunLoopTimerSetNextFireDate(timer.get(), 0); });
  timer.add();
  for (int pass = 1; pass <= 3; ++pass) {
    runOnce();
    EXPECT_EQ(timer.fired, pass);
  }
}

TEST(Timer, DoesNotFireInsideItsOwnCallback) {
  for (double interval : {0.0, 1.0}) {
    SimulatedTime time;
    double elapsedInside = 0;
    Timer timer(1, interval, [&] {
      if (timer.fired > 1) return;
      EXPECT_EQ(BQRunLoopRunInMode(kMode, 5, false), kBQRunLoopRunTimedOut);
      elapsedInside = time.elapsed();
    });
    timer.add();
    BQRunLoopRunInMode(kMode, 1.25, false);
    EXPECT_EQ(timer.fired, 1);
    EXPECT_EQ(elapsedInside, 6) << "the nested run waits for its limit, not for the timer";
  }
}

TEST(Timer, HostileLifetimes) {
  const struct {
    const char* what;
    std::function<void(Timer& self, Timer& other)> act;
    int otherFired;
  } cases[] = {
      {"invalidates itself", [](Timer& self, Timer&) { BQRunLoopTimerInvalidate(self.get()); }, 1},
      {"removes and releases itself",
       [](Timer& self, Timer&) {
         BQRunLoopRemoveTimer(currentLoop(), self.get(), kMode);
         self.release();
       },
       1},
      {"invalidates the next", [](Timer&, Timer& other) { BQRunLoopTimerInvalidate(other.get()); }, 0},
      {"removes and releases the next",
       [](Timer&, Timer& other) {
         BQRunLoopRemoveTimer(currentLoop(), other.get(), kMode);
         other.release();
       },
       0},
      {"moves the next away",
       [](Timer&, Timer& other) { BQRunLoopTimerSetNextFireDate(other.get(), Timer::now() + 60); }, 0},
      {"lets the next fire in a nested run", [](Timer&, Timer&) { runOnce(); }, 1},
  };
  for (const auto& test : cases) {
    for (double interval : {0.0, 30.0}) {
      SCOPED_TRACE(testing::Message() << test.what << ", interval " << interval);
      SimulatedTime time;
      Timer* other = nullptr;
      Timer self(1, interval, [&] { test.act(self, *other); });
      Timer next(1, interval);
      other = &next;
      self.add();
      next.add();
      time.advance(2);
      runOnce();
      EXPECT_EQ(self.fired, 1);
      EXPECT_EQ(next.fired, test.otherFired);
    }
  }
}

TEST(Timer, ItsModeHoldsItUntilItIsInvalid) {
  const struct {
    const char* what;
    void (*end)(BQRunLoopTimer* timer);
  } cases[] = {
      {"invalidated", BQRunLoopTimerInvalidate},
      {"removed", [](BQRunLoopTimer* timer) { BQRunLoopRemoveTimer(currentLoop(), timer, kMode); }},
      {"fired", [](BQRunLoopTimer*) { BQRunLoopRunInMode(kMode, kNoLimit, false); }},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    SimulatedTime time;
    int released = 0;
    BQRunLoopTimerContext context = {};
    context.info = &released;
    context.release = [](const void* info) { ++*static_cast<int*>(const_cast<void*>(info)); };
    BQRunLoopTimer* timer = BQRunLoopTimerCreate(
        Timer::now() + 60, 0, 0, 0, [](BQRunLoopTimer*, void*) {}, &context);
    BQRunLoopAddTimer(currentLoop(), timer, kMode);
    BQRelease(timer);
    EXPECT_EQ(released, 0);
    test.end(timer);
    EXPECT_EQ(released, 1);
  }
}

TEST(Timer, TenThousandFireInOrder) {
  SimulatedTime time;
  std::mt19937 random(1);
  std::deque<Timer> timers;
  double last = 0;
  bool inOrder = true;
  int fired = 0;
  for (int index = 0; index < 10'000; ++index) {
    timers.emplace_back(static_cast<double>(random() % 5000) + 1, 0, [&] {
      inOrder = inOrder && time.elapsed() >= last;
      last = time.elapsed();
      ++fired;
    });
    timers.back().add();
  }
  for (size_t index = 0; index < timers.size(); index += 3) {
    BQRunLoopTimerSetNextFireDate(timers[index].get(),
                                  Timer::now() + static_cast<double>(random() % 5000) + 1);
  }
  for (size_t index = 0; index < timers.size(); index += 5) BQRunLoopTimerInvalidate(timers[index].get());
  EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, false), kBQRunLoopRunFinished);
  EXPECT_EQ(fired, 8000);
  EXPECT_TRUE(inOrder);
}

}  // namespace
