#include <BQ/BQRunLoop.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/runloop/Support.h"

namespace {

constexpr uint32_t kRead = kBQFileDescriptorRead;
constexpr uint32_t kWrite = kBQFileDescriptorWrite;

TEST(Descriptor, ReportsWhatIsAskedForAndReady) {
  enum Peer { kSilent, kSends, kCloses };
  const struct {
    uint32_t interest;
    Peer peer;
    uint32_t ready;
  } cases[] = {
      {kRead, kSilent, 0},
      {kWrite, kSilent, kWrite},
      {kRead | kWrite, kSilent, kWrite},
      {kRead, kSends, kRead},
      {kWrite, kSends, kWrite},
      {kRead | kWrite, kSends, kRead | kWrite},
      {kRead, kCloses, kRead},
      {kWrite, kCloses, kWrite},
      {kRead | kWrite, kCloses, kRead | kWrite},
      {0, kSilent, 0},
      {0, kSends, 0},
      {0, kCloses, 0},
      {0xF0, kSends, 0},
      {0xF1, kSends, kRead},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(testing::Message() << test.interest << " " << test.peer);
    SocketPair sockets;
    if (test.peer == kSends) {
      ASSERT_TRUE(sockets.send());
    }
    if (test.peer == kCloses) sockets.closePeer();
    Descriptor descriptor(sockets.fd(), test.interest);
    descriptor.add();
    runOnce();
    EXPECT_EQ(descriptor.called, test.ready == 0 ? 0 : 1);
    EXPECT_EQ(descriptor.lastReady, test.ready);
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
  EXPECT_EQ(descriptor.called, 1);
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
  EXPECT_EQ(descriptor.called, 1);
}

TEST(Descriptor, IsLevelTriggered) {
  SocketPair sockets;
  ASSERT_TRUE(sockets.send());
  Descriptor descriptor(sockets.fd(), kRead, [&](uint32_t) {
    if (descriptor.called == 2) sockets.receive();
  });
  descriptor.add();
  for (int pass = 0; pass < 4; ++pass) runOnce();
  EXPECT_EQ(descriptor.called, 2);
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
  EXPECT_EQ(reader.called, 0);
  EXPECT_EQ(writer.called, 1);
  ASSERT_TRUE(sockets.send());
  writer.remove();
  runOnce();
  EXPECT_EQ(reader.called, 1);
  EXPECT_EQ(writer.called, 1);
  writer.add();
  runOnce();
  EXPECT_EQ(reader.lastReady, kRead);
  EXPECT_EQ(writer.lastReady, kWrite);
}

TEST(Descriptor, ServedInItsModesOnly) {
  SocketPair sockets;
  ASSERT_TRUE(sockets.send());
  Descriptor descriptor(sockets.fd(), kRead);
  descriptor.add(kOtherMode);
  EXPECT_EQ(runOnce(kMode), kBQRunLoopRunFinished);
  descriptor.add(kMode);
  runOnce(kMode);
  runOnce(kOtherMode);
  EXPECT_EQ(descriptor.called, 2);
  BQFileDescriptorInvalidate(descriptor.get());
  EXPECT_EQ(runOnce(kMode), kBQRunLoopRunFinished);
  EXPECT_EQ(runOnce(kOtherMode), kBQRunLoopRunFinished);
}

TEST(Descriptor, NumberUsedAnewIsWatchedAnew) {
  auto sockets = std::make_unique<SocketPair>();
  const int number = sockets->fd();
  Descriptor first(number, kRead);
  first.add();
  runOnce();
  first.remove();
  sockets = nullptr;
  SocketPair others;
  ASSERT_EQ(others.fd(), number) << "the lowest free number is taken";
  Descriptor second(number, kRead);
  second.add();
  runOnce();
  EXPECT_EQ(second.called, 0);
  ASSERT_TRUE(others.send());
  runOnce();
  EXPECT_EQ(second.called, 1);
  EXPECT_EQ(first.called, 0);
}

TEST(Descriptor, ReadinessOfAnEarlierOwnerOfTheNumberIsDropped) {
  SocketPair first;
  auto second = std::make_unique<SocketPair>();
  ASSERT_TRUE(first.send());
  ASSERT_TRUE(second->send());
  std::unique_ptr<SocketPair> third;
  std::unique_ptr<Descriptor> late;
  std::unique_ptr<Descriptor> replaced;
  const auto replace = [&](uint32_t) {
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
  EXPECT_EQ(late->called, 0) << "nothing was sent to the third pair";
}

TEST(Descriptor, ClosedBeforeItsRemovalHarmsNobody) {
  auto sockets = std::make_unique<SocketPair>();
  const int number = sockets->fd();
  Descriptor stale(number, kRead);
  stale.add();
  runOnce();
  sockets = nullptr;
  SocketPair others;
  ASSERT_EQ(others.fd(), number);
  ASSERT_TRUE(others.send());
  Descriptor fresh(number, kRead | kWrite);
  fresh.add();
  runOnce();
  EXPECT_EQ(fresh.lastReady, kRead | kWrite);
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
  EXPECT_EQ(always.called, 2);
  EXPECT_EQ(always.lastReady, kRead);
  EXPECT_EQ(ordinary.called, 2) << "watched from the second pass on at the latest";
  always.remove();
  runOnce();
  EXPECT_EQ(always.called, 2);
  fclose(file);
}

TEST(Descriptor, HostileLifetimes) {
  const struct {
    const char* what;
    std::function<void(Descriptor& self, Descriptor& other)> act;
  } cases[] = {
      {"invalidate", [](Descriptor& self, Descriptor&) { BQFileDescriptorInvalidate(self.get()); }},
      {"remove and release",
       [](Descriptor& self, Descriptor&) {
         self.remove();
         self.release();
       }},
      {"remove and release the other",
       [](Descriptor&, Descriptor& other) {
         other.remove();
         other.release();
       }},
      {"no interest in the other", [](Descriptor&, Descriptor& other) { other.setInterest(0); }},
  };
  for (const bool sameFileDescriptor : {false, true}) {
    for (const auto& test : cases) {
      SCOPED_TRACE(testing::Message() << test.what << ", same file descriptor: " << sameFileDescriptor);
      SocketPair sockets;
      SocketPair others;
      ASSERT_TRUE(sockets.send());
      ASSERT_TRUE(others.send());
      Descriptor* pair[2] = {};
      bool acted = false;
      const auto act = [&](int index) {
        if (!std::exchange(acted, true)) test.act(*pair[index], *pair[1 - index]);
      };
      Descriptor first(sockets.fd(), kRead, [&](uint32_t) { act(0); });
      Descriptor second(sameFileDescriptor ? sockets.fd() : others.fd(), kRead, [&](uint32_t) { act(1); });
      pair[0] = &first;
      pair[1] = &second;
      first.add();
      second.add();
      runOnce();
      const bool concernsOther = std::string(test.what).find("other") != std::string::npos;
      EXPECT_EQ(first.called + second.called, concernsOther ? 1 : 2);
      runOnce();
      EXPECT_EQ(first.called + second.called, concernsOther ? 2 : 3);
    }
  }
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
  Descriptor first(sockets[0].fd(), kRead, [&](uint32_t) { serve(sockets[0]); });
  Descriptor second(sockets[1].fd(), kRead, [&](uint32_t) { serve(sockets[1]); });
  first.add();
  second.add();
  for (SocketPair& pair : sockets) ASSERT_TRUE(pair.send());
  runOnce();
  EXPECT_EQ(first.called + second.called, 3);
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
      EXPECT_EQ(source.performed, 1);
      EXPECT_EQ(descriptor.called, 1);
      sockets.receive();
      EXPECT_EQ(BQRunLoopRunInMode(kMode, 1e-6, false), kBQRunLoopRunTimedOut);
      ASSERT_TRUE(sockets.send());
    }
    EXPECT_EQ(BQRunLoopRunInMode(kMode, kNoLimit, true), kBQRunLoopRunHandledSource);
    EXPECT_EQ(descriptor.called, 2);
  }).join();
}

TEST(Descriptor, MoreThanOneWaitReports) {
  std::vector<std::unique_ptr<SocketPair>> sockets;
  std::vector<std::unique_ptr<Descriptor>> descriptors;
  for (int index = 0; index < 200; ++index) {
    SocketPair& pair = *sockets.emplace_back(std::make_unique<SocketPair>());
    ASSERT_TRUE(pair.send());
    descriptors.emplace_back(
        std::make_unique<Descriptor>(pair.fd(), kRead, [&pair](uint32_t) { pair.receive(); }));
    descriptors.back()->add();
  }
  for (int pass = 0; pass < 10; ++pass) runOnce();
  for (const auto& descriptor : descriptors) EXPECT_EQ(descriptor->called, 1);
}

}  // namespace
