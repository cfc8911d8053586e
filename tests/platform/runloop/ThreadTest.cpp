#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

#include "platform/runloop/Support.h"

namespace {

void runUntilStopped() {
  EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, false), kBQRunLoopRunStopped);
}

TEST(Threads, LastOfManySignalsIsAlwaysSeen) {
  constexpr int kThreads = 4;
  constexpr int kSignals = 5000;
  std::atomic<int> produced{0};
  Source consumer([&] {
    if (produced == kThreads * kSignals) BQRunLoopStop(currentLoop());
  });
  consumer.add();
  std::vector<std::thread> producers;
  for (int index = 0; index < kThreads; ++index) {
    producers.emplace_back([&, loop = currentLoop()] {
      for (int signal = 0; signal < kSignals; ++signal) {
        ++produced;
        consumer.signal();
        if (signal % 16 == 0) BQRunLoopWakeUp(loop);
      }
    });
  }
  runUntilStopped();
  for (std::thread& producer : producers) producer.join();
  EXPECT_LE(consumer.calls, kThreads * kSignals);
}

/* The next signal comes while the loop is somewhere between its answer to the last one and its sleep. */
TEST(Threads, SignalJustBeforeTheLoopFallsAsleepIsSeen) {
  constexpr int kRounds = 10'000;
  std::atomic<int> answered{0};
  Source source([&] {
    const int round = ++answered;
    if (round == kRounds) BQRunLoopStop(currentLoop());
    for (std::atomic<int> delay{round % 100}; delay > 0;) --delay;
  });
  source.add();
  std::thread other([&] {
    for (int round = 0; round < kRounds; ++round) {
      while (answered < round) continue;
      source.signal();
    }
  });
  runUntilStopped();
  other.join();
}

TEST(Threads, StopAndSignalInAnyModeWakeALoopThatSleeps) {
  for (int round = 0; round < 200; ++round) {
    const BQString* mode = round % 2 == 0 ? kMode : kOtherMode;
    std::promise<void> running;
    Source announcer([&] { running.set_value(); });
    Source source([] { BQRunLoopStop(currentLoop()); });
    source.add(kMode).add(kOtherMode);
    announcer.add(mode).signal();
    std::thread other([&, loop = currentLoop()] {
      running.get_future().wait();
      round % 4 < 2 ? BQRunLoopStop(loop) : source.signal();
    });
    EXPECT_EQ(BQRunLoopRunInMode(mode, kNoLimit, false), kBQRunLoopRunStopped);
    other.join();
  }
  SimulatedTime time;
  Source source;
  source.add();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, 5, false), kBQRunLoopRunTimedOut);
  EXPECT_EQ(time.elapsed(), 5) << "the wake-up was used up";
}

TEST(Threads, SignalsWhileTheSourceIsAddedRemovedAndInvalidated) {
  std::atomic<bool> done{false};
  std::atomic<BQRunLoopSource*> shared{nullptr};
  std::thread signaller([&] {
    while (!done) {
      BQRunLoopSource* source = shared;
      if (source == nullptr) {
        std::this_thread::yield();
        continue;
      }
      for (int count = 0; count < 20; ++count) BQRunLoopSourceSignal(source);
      shared = nullptr;
    }
  });
  for (int round = 0; round < 100; ++round) {
    Source source;
    source.add();
    shared = source.get();
    while (shared != nullptr) {
      runOnce();
      source.remove();
      source.add(kOtherMode);
      runOnce(kOtherMode);
      source.add();
      source.remove(kOtherMode);
      std::this_thread::yield();
    }
    runOnce();
    EXPECT_GE(source.calls, 1);
    const int performed = source.calls;
    runOnce();
    EXPECT_EQ(source.calls, performed);

    shared = source.get();
    source.invalidate();
    while (shared != nullptr) std::this_thread::yield();
  }
  done = true;
  signaller.join();
}

TEST(Threads, LoopThatIsHeldOutlivesItsThreadHarmlessly) {
  bq::Ref<BQRunLoop> loop;
  int cancelled = 0;
  BQRunLoopSourceContext context = {};
  context.info = &cancelled;
  context.cancel = [](void* info, BQRunLoop*, const BQString*) { ++*static_cast<int*>(info); };
  const auto source = values::own(BQRunLoopSourceCreate(0, &context));
  Timer timer(3600, 0);
  SocketPair sockets;
  Descriptor descriptor(sockets.fd(), kBQFileDescriptorRead);
  std::thread([&] {
    loop = bq::Ref<BQRunLoop>::retain(currentLoop());
    BQRunLoopAddSource(currentLoop(), source.get(), kMode);
    BQRunLoopAddSource(currentLoop(), source.get(), kOtherMode);
    BQRunLoopSourceSignal(source.get());
    timer.add().add(kOtherMode);
    descriptor.add();
  }).join();

  EXPECT_EQ(cancelled, 0);
  EXPECT_FALSE(BQRunLoopContainsSource(loop.get(), source.get(), kMode));
  EXPECT_FALSE(BQRunLoopContainsTimer(loop.get(), timer.get(), kMode));
  BQRunLoopSourceSignal(source.get());
  BQRunLoopWakeUp(loop.get());
  BQRunLoopStop(loop.get());
  BQRunLoopAddSource(loop.get(), source.get(), kMode);
  EXPECT_FALSE(BQRunLoopContainsSource(loop.get(), source.get(), kMode));
  EXPECT_EQ(BQGetRetainCount(source.get()), 1);

  ASSERT_TRUE(sockets.send());
  timer.add();
  descriptor.add();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, true), kBQRunLoopRunHandledSource)
      << "what was on the loop may join another";
}

TEST(Threads, SignalsWhileTheThreadEnds) {
  for (int round = 0; round < 200; ++round) {
    Source source;
    std::promise<void> added;
    std::thread owner([&] {
      source.add();
      added.set_value();
      runOnce();
    });
    added.get_future().wait();
    for (int count = 0; count < 50; ++count) source.signal();
    owner.join();
    source.signal();
    EXPECT_EQ(BQGetRetainCount(source.get()), 1);
  }
}

/* Made before the thread's loop, so destroyed after it. */
struct LateUser {
  std::promise<bool>* foundNothing = nullptr;
  ~LateUser() {
    foundNothing->set_value(BQRunLoopGetCurrent() == nullptr &&
                            BQRunLoopRunInMode(kMode, kNoLimit, false) == kBQRunLoopRunFinished);
  }
};

TEST(Threads, NoLoopIsMadeWhenTheThreadHasLostItsOwn) {
  std::promise<bool> foundNothing;
  std::thread([&] {
    thread_local LateUser user;
    user.foundNothing = &foundNothing;
    EXPECT_NE(BQRunLoopGetCurrent(), nullptr);
  }).join();
  EXPECT_TRUE(foundNothing.get_future().get());
}

}  // namespace
