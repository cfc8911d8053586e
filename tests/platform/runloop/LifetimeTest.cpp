/* What a callback may do to its own object and to the next that is due. */
#include <gtest/gtest.h>

#include "platform/runloop/Support.h"

namespace {

struct DueSource : Source {
  explicit DueSource(std::function<void()> perform) : Source(std::move(perform)) { signal(); }
  void postpone() { remove(); }
};

template <int kInterval>
struct DueTimer : Timer {
  explicit DueTimer(std::function<void()> fire) : Timer(-1, kInterval, std::move(fire)) {}
  void postpone() { setDate(now() + 60); }
};

struct DueDescriptor : SocketPair, Descriptor {
  explicit DueDescriptor(std::function<void()> call)
      : Descriptor(fd(), kBQFileDescriptorRead, std::move(call)) {
    EXPECT_TRUE(send());
  }
  void postpone() { setInterest(0); }
};

/* All of them watch one file descriptor. */
struct DueSharedDescriptor : Descriptor {
  explicit DueSharedDescriptor(std::function<void()> call)
      : Descriptor(readyPair().fd(), kBQFileDescriptorRead, std::move(call)) {}
  void postpone() { setInterest(0); }

  static SocketPair& readyPair() {
    static SocketPair sockets;
    static const bool isReady = sockets.send();
    EXPECT_TRUE(isReady);
    return sockets;
  }
};

template <class T>
class Lifetime : public testing::Test {};

using Items = testing::Types<DueSource, DueTimer<0>, DueTimer<30>, DueDescriptor, DueSharedDescriptor>;
TYPED_TEST_SUITE(Lifetime, Items, );

TYPED_TEST(Lifetime, MayEndInsideACallback) {
  using Due = TypeParam;
  const struct {
    const char* what;
    void (*act)(Due& self, Due& other);
    bool endsSelf;
  } cases[] = {
      {"invalidates itself", [](Due& self, Due&) { self.invalidate(); }, true},
      {"removes and releases itself", [](Due& self, Due&) { self.remove(), self.release(); }, true},
      {"invalidates the next", [](Due&, Due& other) { other.invalidate(); }, false},
      {"removes and releases the next", [](Due&, Due& other) { other.remove(), other.release(); }, false},
      {"moves the next to another mode", [](Due&, Due& other) { other.remove(), other.add(kOtherMode); },
       false},
      {"postpones the next", [](Due&, Due& other) { other.postpone(); }, false},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    Due* pair[2] = {};
    Due* ended = nullptr;
    const auto act = [&](int index) {
      if (ended != nullptr) return;
      ended = pair[test.endsSelf ? index : 1 - index];
      test.act(*pair[index], *pair[1 - index]);
    };
    Due first([&] { act(0); }), second([&] { act(1); });
    pair[0] = &first;
    pair[1] = &second;
    first.add();
    second.add();
    for (int pass = 0; pass < 2; ++pass) {
      runOnce();
      EXPECT_EQ(ended->calls, test.endsSelf ? 1 : 0);
      EXPECT_GE(first.calls + second.calls, test.endsSelf ? 2 : 1);
    }
  }
}

/* Sources and timers whose contexts use them while they are finalised. */
TEST(ContextRelease, MayUseTheObjectThatEnds) {
  static BQTypeRef ending;
  static int releases;
  releases = 0;
  const auto use = [](const void*) {
    ++releases;
    BQRelease(BQRetain(ending));
    auto* source = static_cast<BQRunLoopSource*>(const_cast<void*>(ending));
    BQRunLoopAddSource(currentLoop(), source, kMode);
    BQRunLoopSourceSignal(source);
    BQRunLoopAddTimer(currentLoop(), static_cast<BQRunLoopTimer*>(const_cast<void*>(ending)), kMode);
  };
  BQRunLoopSourceContext sourceContext = {};
  BQRunLoopTimerContext timerContext = {};
  sourceContext.release = timerContext.release = use;
  BQRelease(ending = BQRunLoopSourceCreate(0, &sourceContext));
  BQRelease(ending = BQRunLoopTimerCreate(
                0, 1, 0, 0, [](BQRunLoopTimer*, void*) {}, &timerContext));
  EXPECT_EQ(releases, 2);
  EXPECT_EQ(runOnce(), kBQRunLoopRunFinished);
}

}  // namespace
