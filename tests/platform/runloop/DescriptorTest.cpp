#include <gtest/gtest.h>

#include <sys/resource.h>

#include <cstdio>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "platform/runloop/Support.h"

namespace {

constexpr uint32_t kRead = kBQFileDescriptorRead;
constexpr uint32_t kWrite = kBQFileDescriptorWrite;

TEST(Descriptor, ReportsWhatIsAskedForAndReady) {
  enum Peer { kSilent, kSends, kCloses };
  for (Peer peer : {kSilent, kSends, kCloses}) {
    for (uint32_t interest : {0u, kRead, kWrite, kRead | kWrite, 0xF0u, 0xF0u | kRead}) {
      SCOPED_TRACE(testing::Message() << interest << " " << peer);
      SocketPair sockets;
      if (peer == kCloses) sockets.closePeer();
      ASSERT_EQ(peer == kSends && sockets.send(), peer == kSends);
      Descriptor descriptor(sockets.fd(), interest);
      descriptor.add();
      runOnce();
      const uint32_t ready = interest & (peer == kSilent ? kWrite : kRead | kWrite);
      EXPECT_EQ(descriptor.calls, ready == 0 ? 0 : 1);
      EXPECT_EQ(descriptor.lastReady, ready);
    }
  }
}

TEST(Descriptor, HangUpWithoutInterestDoesNotKeepTheLoopBusy) {
  SimulatedTime time;
  SocketPair sockets, others;
  Descriptor descriptor(sockets.fd(), kRead), other(others.fd(), kRead);
  descriptor.add();
  other.add();
  runOnce();
  descriptor.setInterest(0);
  sockets.closePeer();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, 5, false), kBQRunLoopRunTimedOut);
  EXPECT_EQ(time.elapsed(), 5);
  descriptor.setInterest(kRead);
  runOnce();
  EXPECT_EQ(descriptor.calls, 1);
}

TEST(Descriptor, WithoutInterestDoesNotKeepAModeFromBeingEmpty) {
  SocketPair sockets;
  Descriptor descriptor(sockets.fd(), kRead);
  descriptor.add();
  runOnce();
  descriptor.setInterest(0);
  EXPECT_EQ(BQRunLoopRunInMode(kMode, 5, false), kBQRunLoopRunFinished);
  ASSERT_TRUE(sockets.send());
  descriptor.setInterest(kRead);
  EXPECT_EQ(BQRunLoopRunInMode(kMode, 5, true), kBQRunLoopRunHandledSource);
  EXPECT_EQ(descriptor.calls, 1);
}

TEST(Descriptor, IsReportedInItsModesUntilItIsServed) {
  SocketPair sockets;
  ASSERT_TRUE(sockets.send());
  Descriptor descriptor(sockets.fd(), kRead, [&] {
    if (descriptor.calls == 3) sockets.receive();
  });
  descriptor.add(kOtherMode);
  EXPECT_EQ(runOnce(kMode), kBQRunLoopRunFinished);
  descriptor.add(kMode);
  for (const BQString* mode : {kMode, kOtherMode, kMode, kMode, kOtherMode}) runOnce(mode);
  EXPECT_EQ(descriptor.calls, 3);
  descriptor.invalidate();
  EXPECT_EQ(runOnce(kMode), kBQRunLoopRunFinished);
  EXPECT_EQ(runOnce(kOtherMode), kBQRunLoopRunFinished);
}

TEST(Descriptor, InterestChangesToAndFro) {
  SocketPair sockets;
  ASSERT_TRUE(sockets.send());
  Descriptor descriptor(sockets.fd(), kWrite);
  descriptor.add();
  const struct {
    std::initializer_list<uint32_t> changes;
    uint32_t ready;
  } steps[] = {
      {{}, kWrite}, {{kRead}, kRead},          {{kWrite, kRead}, kRead},
      {{0}, 0},     {{kRead, kWrite}, kWrite}, {{0, kWrite}, kWrite},
  };
  for (const auto& step : steps) {
    for (uint32_t interest : step.changes) descriptor.setInterest(interest);
    descriptor.lastReady = 0;
    runOnce();
    EXPECT_EQ(descriptor.lastReady, step.ready);
  }
}

TEST(Descriptor, SameFileDescriptorTwiceInAMode) {
  SocketPair sockets;
  Descriptor reader(sockets.fd(), kRead);
  Descriptor writer(sockets.fd(), kWrite);
  reader.add();
  writer.add();
  runOnce();
  EXPECT_EQ(reader.calls, 0);
  EXPECT_EQ(writer.calls, 1);
  ASSERT_TRUE(sockets.send());
  writer.remove();
  runOnce();
  EXPECT_EQ(reader.calls, 1);
  EXPECT_EQ(writer.calls, 1);
  writer.add();
  runOnce();
  EXPECT_EQ(reader.lastReady, kRead);
  EXPECT_EQ(writer.lastReady, kWrite);
}

TEST(Descriptor, NumberUsedAnewIsWatchedAnew) {
  for (bool isRemoved : {true, false}) {
    SCOPED_TRACE(isRemoved);
    auto sockets = std::make_unique<SocketPair>();
    const int number = sockets->fd();
    Descriptor first(number, kRead);
    first.add();
    runOnce();
    if (isRemoved) first.remove();
    sockets = nullptr;
    SocketPair others;
    ASSERT_EQ(others.fd(), number) << "the lowest free number is taken";
    Descriptor second(number, kRead | kWrite);
    second.add();
    runOnce();
    EXPECT_EQ(second.lastReady, kWrite);
    EXPECT_EQ(first.calls, 0);
    ASSERT_TRUE(others.send());
    runOnce();
    EXPECT_EQ(second.lastReady, kRead | kWrite);
  }
}

TEST(Descriptor, ReadinessOfAnEarlierOwnerOfTheNumberIsDropped) {
  SocketPair first;
  auto second = std::make_unique<SocketPair>();
  ASSERT_TRUE(first.send());
  ASSERT_TRUE(second->send());
  std::unique_ptr<SocketPair> third;
  std::unique_ptr<Descriptor> late;
  std::unique_ptr<Descriptor> replaced;
  const auto replace = [&] {
    if (late) return;
    const int number = second->fd();
    replaced = nullptr;
    second = nullptr;
    third = std::make_unique<SocketPair>();
    ASSERT_EQ(third->fd(), number);
    late = std::make_unique<Descriptor>(number, kRead);
    late->add();
  };
  Descriptor replacing(first.fd(), kRead, replace);
  replaced = std::make_unique<Descriptor>(second->fd(), kRead);
  replacing.add();
  replaced->add();
  runOnce();
  ASSERT_NE(late, nullptr);
  EXPECT_EQ(late->calls, 0) << "nothing was sent to the third pair";
}

TEST(Descriptor, FilesThatCannotBeWatchedAreAlwaysReady) {
  FILE* file = tmpfile();
  ASSERT_NE(file, nullptr);
  SocketPair sockets;
  ASSERT_TRUE(sockets.send());
  Descriptor ordinary(sockets.fd(), kRead);
  Descriptor always(fileno(file), kRead);
  ordinary.add();
  always.add();
  EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, true), kBQRunLoopRunHandledSource);
  EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, true), kBQRunLoopRunHandledSource);
  EXPECT_EQ(always.calls, 2);
  EXPECT_EQ(always.lastReady, kRead);
  EXPECT_EQ(ordinary.calls, 2) << "watched from the second pass on at the latest";
  always.remove();
  runOnce();
  EXPECT_EQ(always.calls, 2);
  fclose(file);
}

TEST(Descriptor, ReadinessFoundBeforeANestedRunIsNotReportedAfterIt) {
  SocketPair sockets[2];
  int unread = 0;
  bool nested = false;
  const auto serve = [&](SocketPair& pair) {
    if (!std::exchange(nested, true)) {
      while (BQRunLoopRunInMode(kMode, 0, true) == kBQRunLoopRunHandledSource) continue;
      return;
    }
    if (!pair.receive()) ++unread;
  };
  Descriptor first(sockets[0].fd(), kRead, [&] { serve(sockets[0]); });
  Descriptor second(sockets[1].fd(), kRead, [&] { serve(sockets[1]); });
  first.add();
  second.add();
  for (SocketPair& pair : sockets) ASSERT_TRUE(pair.send());
  runOnce();
  EXPECT_EQ(first.calls + second.calls, 3);
  EXPECT_EQ(unread, 0);
}

/* Lets the process open no further file descriptor, for the life of the object. */
class NoFileDescriptorsLeft {
 public:
  NoFileDescriptorsLeft() {
    getrlimit(RLIMIT_NOFILE, &usual_);
    const int next = dup(STDIN_FILENO);
    close(next);
    const rlimit none = {static_cast<rlim_t>(next), usual_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoFileDescriptorsLeft() { setrlimit(RLIMIT_NOFILE, &usual_); }
  NoFileDescriptorsLeft(const NoFileDescriptorsLeft&) = delete;
  NoFileDescriptorsLeft& operator=(const NoFileDescriptorsLeft&) = delete;

 private:
  rlimit usual_;
};

TEST(Descriptor, LoopThatGotNoFileDescriptorsServesThemAndRecovers) {
  std::thread([] {
    SocketPair sockets;
    ASSERT_TRUE(sockets.send());
    Descriptor descriptor(sockets.fd(), kRead);
    Source source;
    {
      NoFileDescriptorsLeft none;
      descriptor.add();
      source.add().signal();
      runOnce();
      EXPECT_EQ(source.calls, 1);
      EXPECT_EQ(descriptor.calls, 1);
      sockets.receive();
      EXPECT_EQ(BQRunLoopRunInMode(kMode, 1e-6, false), kBQRunLoopRunTimedOut);
      ASSERT_TRUE(sockets.send());
    }
    EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, true), kBQRunLoopRunHandledSource);
    EXPECT_EQ(descriptor.calls, 2);
  }).join();
}

TEST(Descriptor, MoreThanOneWaitReports) {
  std::vector<std::unique_ptr<SocketPair>> sockets;
  std::vector<std::unique_ptr<Descriptor>> descriptors;
  for (int index = 0; index < 200; ++index) {
    SocketPair& pair = *sockets.emplace_back(std::make_unique<SocketPair>());
    ASSERT_TRUE(pair.send());
    descriptors.emplace_back(std::make_unique<Descriptor>(pair.fd(), kRead, [&pair] { pair.receive(); }));
    descriptors.back()->add();
  }
  for (int pass = 0; pass < 10; ++pass) runOnce();
  for (const auto& descriptor : descriptors) EXPECT_EQ(descriptor->calls, 1);
}

}  // namespace
