#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "platform/runloop/Support.h"

namespace {

using namespace values;

TEST(RunLoop, EmptyModeFinishesAtOnce) {
  SimulatedTime time;
  EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, false), kBQRunLoopRunFinished);
  Source source;
  source.add(kOtherMode);
  EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, false), kBQRunLoopRunFinished);
  source.remove(kOtherMode);
  EXPECT_EQ(BQRunLoopRunInMode(kOtherMode, kNoLimit, false), kBQRunLoopRunFinished);
  EXPECT_EQ(time.elapsed(), 0);
}

TEST(RunLoop, TimeLimits) {
  const double kInfinity = std::numeric_limits<double>::infinity();
  const struct {
    double limit;
    double timerDelay;
    BQRunLoopRunResult result;
    double elapsed;
  } cases[] = {
      {2.5, 100, kBQRunLoopRunTimedOut, 2.5},        {0, 100, kBQRunLoopRunTimedOut, 0},
      {-1, 100, kBQRunLoopRunTimedOut, 0},           {-kInfinity, 100, kBQRunLoopRunTimedOut, 0},
      {std::nan(""), 100, kBQRunLoopRunTimedOut, 0}, {1e30, 100, kBQRunLoopRunFinished, 100},
      {kInfinity, 100, kBQRunLoopRunFinished, 100},  {8.1e9, 8e9, kBQRunLoopRunFinished, 8e9},
      {1e-9, 100, kBQRunLoopRunTimedOut, 1e-9},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.limit);
    SimulatedTime time;
    Timer timer(0, 0);
    timer.setDate(Timer::now() + test.timerDelay);
    timer.add();
    EXPECT_EQ(BQRunLoopRunInMode(kMode, test.limit, false), test.result);
    EXPECT_EQ(time.elapsed(), test.elapsed);
  }
}

TEST(RunLoop, ReturnsAfterTheFirstPassThatHandledSomethingIfAsked) {
  SimulatedTime time;
  Source source;
  source.add().signal();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, 3, true), kBQRunLoopRunHandledSource);
  EXPECT_EQ(time.elapsed(), 0);
  EXPECT_EQ(BQRunLoopRunInMode(kMode, 3, true), kBQRunLoopRunTimedOut) << "one signal, one perform";
  EXPECT_EQ(source.calls, 1);

  SocketPair sockets;
  Descriptor descriptor(sockets.fd(), kBQFileDescriptorRead);
  descriptor.add();
  ASSERT_TRUE(sockets.send());
  EXPECT_EQ(BQRunLoopRunInMode(kMode, 3, true), kBQRunLoopRunHandledSource);
  descriptor.remove();

  Timer timer(1, 1);
  timer.add();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, 2.5, true), kBQRunLoopRunTimedOut) << "a timer is no source";
  EXPECT_EQ(timer.calls, 2);
}

TEST(RunLoop, PassFiresTimersThenPerformsSourcesThenServesDescriptors) {
  SimulatedTime time;
  std::string order;
  SocketPair sockets;
  Descriptor descriptor(sockets.fd(), kBQFileDescriptorRead, [&] { order += 'd'; });
  Source source([&] { order += 's'; });
  Timer timer(0, 10, [&] { order += 't'; });
  descriptor.add();
  source.add().signal();
  timer.add();
  ASSERT_TRUE(sockets.send());
  runOnce();
  EXPECT_EQ(order, "tsd");
  runOnce();
  EXPECT_EQ(order, "tsdd") << "the descriptor is still ready, nothing else is";
}

TEST(RunLoop, DescriptorsAreNotStarvedBySources) {
  Source source;
  Source restless([&source] { source.signal(); });
  SocketPair sockets;
  Descriptor descriptor(sockets.fd(), kBQFileDescriptorRead);
  source.add();
  restless.add();
  descriptor.add();
  ASSERT_TRUE(sockets.send());
  for (int pass = 0; pass < 10; ++pass) {
    restless.signal();
    BQRunLoopRunInMode(kMode, kNoLimit, true);
  }
  EXPECT_EQ(descriptor.calls, 10);
}

TEST(RunLoop, StopEndsTheInnermostRunOnly) {
  SimulatedTime time;
  BQRunLoopRunResult inner = kBQRunLoopRunFinished;
  bool outerWentOn = false;
  Source source([&] {
    Source stopper([] { BQRunLoopStop(currentLoop()); });
    stopper.add(kOtherMode).signal();
    inner = BQRunLoopRunInMode(kOtherMode, kNoLimit, false);
  });
  Timer later(1, 0, [&] {
    outerWentOn = true;
    BQRunLoopStop(currentLoop());
  });
  source.add().signal();
  later.add();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, false), kBQRunLoopRunStopped);
  EXPECT_EQ(inner, kBQRunLoopRunStopped);
  EXPECT_TRUE(outerWentOn);
}

TEST(RunLoop, StopIsReportedEvenWhenThePassHandledASource) {
  Source source([] { BQRunLoopStop(currentLoop()); });
  source.add().signal();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, true), kBQRunLoopRunStopped);
}

TEST(RunLoop, StopOfALoopThatDoesNotRunHasNoEffect) {
  BQRunLoopStop(currentLoop());
  Source source;
  source.add().signal();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, true), kBQRunLoopRunHandledSource);
}

TEST(RunLoop, CurrentModeIsThatOfTheInnermostRun) {
  std::string seen;
  const auto look = [&seen] { seen += text(own(BQRunLoopCopyCurrentMode(currentLoop()))) + "|"; };
  Source inner(look);
  Source outer([&] {
    look();
    inner.signal();
    runOnce(kOtherMode);
    look();
  });
  inner.add(kOtherMode);
  outer.add().signal();
  look();
  runOnce();
  look();
  EXPECT_EQ(seen, "(none)|a mode|another mode|a mode|(none)|");
}

TEST(RunLoop, ModesAreEqualByContentAndKeepTheirName) {
  const auto mutableMode = own(BQStringCreateMutableCopy(kMode));
  Source source;
  source.add(mutableMode.get());
  BQStringAppend(mutableMode.get(), BQSTR(" changed"));
  EXPECT_TRUE(BQRunLoopContainsSource(currentLoop(), source.get(), kMode));
  EXPECT_FALSE(BQRunLoopContainsSource(currentLoop(), source.get(), mutableMode.get()));
  source.signal();
  runOnce(mutableMode.get());
  EXPECT_EQ(source.calls, 0);
  runOnce(kMode);
  EXPECT_EQ(source.calls, 1);
}

TEST(RunLoop, ModesWorkHoweverManyThereWere) {
  Source source;
  for (int number = 0; number < 100; ++number) {
    const auto mode = string("mode " + std::to_string(number));
    source.add(mode.get()).signal();
    runOnce(mode.get());
    source.remove(mode.get());
  }
  EXPECT_EQ(source.calls, 100);
}

TEST(RunLoop, RunServesTheDefaultModeUntilItIsEmpty) {
  SimulatedTime time;
  Timer timer(4, 0);
  timer.add(kBQRunLoopDefaultMode);
  BQRunLoopRun();
  EXPECT_EQ(timer.calls, 1);
}

TEST(RunLoop, NonsenseFromTheCallerHasNoEffect) {
  BQRunLoop* loop = currentLoop();
  Source source;
  Timer timer(0, 1);
  SocketPair sockets;
  Descriptor descriptor(sockets.fd(), kBQFileDescriptorRead);
  auto* noMode = reinterpret_cast<const BQString*>(source.get());
  auto* noLoop = reinterpret_cast<BQRunLoop*>(source.get());
  auto* noSource = reinterpret_cast<BQRunLoopSource*>(timer.get());
  auto* noTimer = reinterpret_cast<BQRunLoopTimer*>(source.get());
  auto* noDescriptor = reinterpret_cast<BQFileDescriptor*>(source.get());
  for (const BQString* mode : {static_cast<const BQString*>(nullptr), noMode}) {
    source.add(mode);
    timer.add(mode);
    descriptor.add(mode);
    EXPECT_EQ(BQRunLoopRunInMode(mode, kNoLimit, false), kBQRunLoopRunFinished);
  }
  for (BQRunLoop* wrong : {static_cast<BQRunLoop*>(nullptr), noLoop}) {
    BQRunLoopAddSource(wrong, source.get(), kMode);
    BQRunLoopAddTimer(wrong, timer.get(), kMode);
    BQRunLoopAddFileDescriptor(wrong, descriptor.get(), kMode);
    BQRunLoopStop(wrong);
    BQRunLoopWakeUp(wrong);
    EXPECT_EQ(BQRunLoopCopyCurrentMode(wrong), nullptr);
  }
  BQRunLoopAddSource(loop, noSource, kMode);
  BQRunLoopAddTimer(loop, noTimer, kMode);
  BQRunLoopAddFileDescriptor(loop, noDescriptor, kMode);
  EXPECT_FALSE(BQRunLoopSourceIsValid(noSource));
  EXPECT_FALSE(BQRunLoopTimerIsValid(noTimer));
  BQRunLoopSourceSignal(nullptr);
  BQRunLoopSourceInvalidate(noSource);
  BQRunLoopTimerInvalidate(noTimer);
  BQFileDescriptorInvalidate(noDescriptor);
  EXPECT_EQ(runOnce(), kBQRunLoopRunFinished);

  BQRunLoopSourceContext unknownVersion = {};
  unknownVersion.version = 1;
  EXPECT_EQ(BQRunLoopSourceCreate(0, nullptr), nullptr);
  EXPECT_EQ(BQRunLoopSourceCreate(0, &unknownVersion), nullptr);
  EXPECT_EQ(BQRunLoopTimerCreate(0, 0, 0, 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(BQFileDescriptorCreate(0, kBQFileDescriptorRead, nullptr, nullptr), nullptr);
  EXPECT_EQ(Descriptor(-1, 0).get(), nullptr);
}

}  // namespace
