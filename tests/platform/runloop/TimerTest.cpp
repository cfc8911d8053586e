#include <gtest/gtest.h>

#include <cmath>
#include <deque>
#include <limits>
#include <random>
#include <vector>

#include "platform/runloop/Support.h"

namespace {

using namespace values;

TEST(Timer, FiresInItsRhythmSkippingWhatItMissed) {
  SimulatedTime time;
  std::vector<double> fired;
  Timer timer(1, 1, [&] {
    fired.push_back(time.elapsed());
    if (fired.size() == 2) time.advance(2.5);
  });
  timer.add();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, 1.5, false), kBQRunLoopRunTimedOut);
  time.advance(1.75);
  EXPECT_EQ(BQRunLoopRunInMode(kMode, 4, false), kBQRunLoopRunTimedOut);
  EXPECT_EQ(fired, (std::vector<double>{1, 3.25, 5.75, 6, 7}));
}

TEST(Timer, FiresOnceAndIsThenInvalid) {
  for (double interval : {0.0, -1.0, std::nan("")}) {
    SimulatedTime time;
    Timer timer(1, interval, [&] { EXPECT_TRUE(BQRunLoopTimerIsValid(timer.get())); });
    timer.add();
    EXPECT_EQ(BQRunLoopRunInMode(kMode, 10, false), kBQRunLoopRunFinished);
    EXPECT_EQ(timer.calls, 1);
    EXPECT_FALSE(BQRunLoopTimerIsValid(timer.get()));
    EXPECT_FALSE(BQRunLoopContainsTimer(currentLoop(), timer.get(), kMode));
  }
}

/* By the system's clock, by which equal dates must be equal too. */
TEST(Timer, FireOrderIsByDateThenByCreation) {
  const BQAbsoluteTime date = Timer::now() - 1;
  std::vector<const Timer*> fired;
  std::deque<Timer> timers;
  for (int index = 0; index < 100; ++index) {
    timers.emplace_back(0, 0, [&, index] { fired.push_back(&timers[static_cast<size_t>(index)]); });
    timers.back().setDate(index == 99 ? date - 1 : date);
    EXPECT_EQ(BQRunLoopTimerGetNextFireDate(timers.back().get()), index == 99 ? date - 1 : date);
  }
  for (auto timer = timers.rbegin(); timer != timers.rend(); ++timer) timer->add();
  runOnce();
  ASSERT_EQ(fired.size(), timers.size());
  for (size_t index = 0; index < fired.size(); ++index) EXPECT_EQ(fired[index], &timers[(index + 99) % 100]);
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
    timer.setDate(test.date);
    timer.add();
    BQRunLoopRunInMode(kMode, 100.5, false);
    EXPECT_EQ(timer.calls, test.fired);
  }
}

TEST(Timer, SetNextFireDateMovesItInEveryMode) {
  SimulatedTime time;
  Timer timer(1, 100);
  timer.add().add(kOtherMode);
  timer.setDate(Timer::now() + 50);
  EXPECT_NEAR(BQRunLoopTimerGetNextFireDate(timer.get()), Timer::now() + 50, 1e-6);
  BQRunLoopRunInMode(kMode, 49, false);
  BQRunLoopRunInMode(kOtherMode, 0.5, false);
  EXPECT_EQ(timer.calls, 0);
  BQRunLoopRunInMode(kOtherMode, 1, false);
  EXPECT_EQ(timer.calls, 1);
  BQRunLoopRunInMode(kMode, 1, false);
  EXPECT_EQ(timer.calls, 1) << "fired in one mode, it is not due in the other";
}

TEST(Timer, FiresOncePerPassHoweverOftenItIsSetBack) {
  SimulatedTime time;
  Timer timer(0, 1, [&] { timer.setDate(0); });
  timer.add();
  for (int pass = 1; pass <= 3; ++pass) {
    runOnce();
    EXPECT_EQ(timer.calls, pass);
  }
}

TEST(Timer, DoesNotFireInsideItsOwnCallbackButOthersDo) {
  for (double interval : {0.0, 1.0}) {
    SimulatedTime time;
    double elapsedInside = 0;
    Timer next(1, 0);
    Timer timer(0.5, interval, [&] {
      if (timer.calls > 1) return;
      EXPECT_EQ(BQRunLoopRunInMode(kMode, 5, false), kBQRunLoopRunTimedOut);
      EXPECT_EQ(next.calls, 1);
      elapsedInside = time.elapsed();
    });
    timer.add();
    next.add();
    time.advance(1);
    runOnce();
    EXPECT_EQ(timer.calls, 1);
    EXPECT_EQ(next.calls, 1);
    EXPECT_EQ(elapsedInside, 6) << "the nested run waits for its limit, not for the timer";
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
    const auto callback = [](BQRunLoopTimer*, void*) {};
    BQRunLoopTimer* timer = BQRunLoopTimerCreate(Timer::now() + 60, 0, 0, 0, callback, &context);
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
  const auto delay = [&random] { return static_cast<double>(random() % 5000) + 1; };
  for (int index = 0; index < 10'000; ++index) {
    timers.emplace_back(delay(), 0, [&] {
      inOrder = inOrder && time.elapsed() >= last;
      last = time.elapsed();
      ++fired;
    });
    timers.back().add();
  }
  for (size_t index = 0; index < timers.size(); index += 3) timers[index].setDate(Timer::now() + delay());
  for (size_t index = 0; index < timers.size(); index += 5) timers[index].invalidate();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, false), kBQRunLoopRunFinished);
  EXPECT_EQ(fired, 8000);
  EXPECT_TRUE(inOrder);
}

}  // namespace
