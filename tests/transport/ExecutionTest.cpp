#include <gtest/gtest.h>

#include <vector>

#include "Call.h"
#include "support/ScriptedPeer.h"

namespace vx {
namespace {

/* Counts what the library does with a context, and what its callback receives. */
struct Recorder {
  int retained = 0;
  int released = 0;
  int delivered = 0;
  VXMethodInvocationRef invocation = nullptr;
  std::string value;

  VXClientContext context() {
    return {0, this,
            [](void* info) -> void* {
              ++static_cast<Recorder*>(info)->retained;
              return info;
            },
            [](void* info) { ++static_cast<Recorder*>(info)->released; }, nullptr};
  }

  static void receive(VXMethodInvocationRef invocation, void* info, const BQDictionary* result) {
    auto* recorder = static_cast<Recorder*>(info);
    ++recorder->delivered;
    recorder->invocation = invocation;
    recorder->value = valueOf(result);
    BQRelease(result);
  }
};

/* Runs a mode until a condition holds, for a while at most. */
template <class Condition>
void runUntil(const BQString* mode, Condition condition) {
  for (int i = 0; i < 10000 && !condition(); ++i) BQRunLoopRunInMode(mode, 5, true);
}

TEST(Execution, SynchronousCallDropsTheCallbackAndItsContext) {
  ScriptedPeer peer({reply(okResponse(replyBody("hello")))});
  TestCall call(peer.url());
  Recorder recorder;
  VXClientContext context = recorder.context();
  VXMethodInvocationSetCallBack(call.get(), Recorder::receive, &context);
  EXPECT_EQ(recorder.retained, 1);
  EXPECT_EQ(valueOf(call.invoke().get()), "hello");
  EXPECT_EQ(recorder.released, 1);
  call.release();
  EXPECT_EQ(recorder.released, 1);
  EXPECT_EQ(recorder.delivered, 0);
}

TEST(Execution, ScheduledCallDeliversOnceWithTheRetainedInfo) {
  ScriptedPeer peer({reply(okResponse(replyBody("later")))});
  TestCall call(peer.url());
  Recorder recorder;
  VXClientContext context = recorder.context();
  VXMethodInvocationSetCallBack(call.get(), Recorder::receive, &context);
  VXMethodInvocationScheduleWithRunLoop(call.get(), BQRunLoopGetCurrent(), BQSTR("my mode"));
  runUntil(BQSTR("my mode"), [&] { return recorder.delivered > 0; });
  BQRunLoopRunInMode(BQSTR("my mode"), 0, false);
  EXPECT_EQ(recorder.delivered, 1);
  EXPECT_EQ(recorder.invocation, call.get());
  EXPECT_EQ(recorder.value, "later");
  call.release();
  EXPECT_EQ(recorder.released, 1);
}

TEST(Execution, TimersOfOtherModesDoNotFireDuringASynchronousCall) {
  Gate gate;
  ScriptedPeer peer({Script().expectRequest().waitFor(gate).send(okResponse(replyBody("x")))});
  int fired = 0;
  BQRunLoopTimerContext context = {0, &fired, nullptr, nullptr, nullptr};
  auto timer = own(BQRunLoopTimerCreate(
      BQAbsoluteTimeGetCurrent() - 1, 0.001, 0, 0,
      [](BQRunLoopTimer*, void* info) { ++*static_cast<int*>(info); }, &context));
  BQRunLoopAddTimer(BQRunLoopGetCurrent(), timer.get(), kBQRunLoopDefaultMode);
  TestCall call(peer.url());
  gate.open();
  EXPECT_EQ(valueOf(call.invoke().get()), "x");
  EXPECT_EQ(fired, 0);
  BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, false);
  EXPECT_EQ(fired, 1);
  BQRunLoopTimerInvalidate(timer.get());
}

TEST(Execution, UnschedulingWithoutACallDoesNothing) {
  TestCall call("http://127.0.0.1/");
  VXMethodInvocationUnscheduleFromRunLoop(call.get(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  EXPECT_EQ(BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, false), kBQRunLoopRunFinished);
}

TEST(Execution, AnInvocationCallsAgainWithTheSameConnection) {
  ScriptedPeer peer({replies(
      {okResponse(replyBody("one")), okResponse(replyBody("two")), okResponse(replyBody("three"))})});
  TestCall call(peer.url());
  for (const char* expected : {"one", "two", "three"}) EXPECT_EQ(valueOf(call.invoke().get()), expected);
  EXPECT_EQ(peer.connectionCount(), 1u);
}

/* What a function of the caller's may do to the call while it is being made. */
struct Meddler {
  void (*meddle)(VXMethodInvocationRef);
  VXMethodInvocationRef invocation;

  static const BQString* serialize(VXMethodInvocationRef, BQTypeRef, void* info) {
    auto* meddler = static_cast<Meddler*>(info);
    if (meddler->meddle != nullptr) meddler->meddle(meddler->invocation);
    return nullptr;
  }
};

void takeOffTheRunLoop(VXMethodInvocationRef invocation) {
  VXMethodInvocationUnscheduleFromRunLoop(invocation, BQRunLoopGetCurrent(), BQSTR("VXSYNC"));
}

TEST(Execution, SynchronousCallThatCannotEndAnyMoreIsAFault) {
  const char* abandoned = "The invocation was taken out of its synchronous call 2 -65794";
  struct Row {
    void (*meddle)(VXMethodInvocationRef);
    const char* expected;
    const char* why;
  };
  const Row rows[] = {
      {takeOffTheRunLoop, abandoned, "nothing serves the call"},
      {[](VXMethodInvocationRef invocation) {
         takeOffTheRunLoop(invocation);
         VXMethodInvocationScheduleWithRunLoop(invocation, BQRunLoopGetCurrent(), BQSTR("elsewhere"));
       },
       abandoned, "a mode that does not run would serve it"},
      {[](VXMethodInvocationRef invocation) { VXMethodInvocationSetCallBack(invocation, nullptr, nullptr); },
       abandoned, "nobody receives the result"},
      {[](VXMethodInvocationRef) { BQRunLoopStop(BQRunLoopGetCurrent()); }, "x", "only one run is stopped"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.why);
    ScriptedPeer peer({replies({okResponse(replyBody("x")), okResponse(replyBody("x"))})});
    TestCall call(peer.url());
    Meddler meddler{row.meddle, call.get()};
    VXClientContext context = {0, &meddler, nullptr, nullptr, nullptr};
    VXMethodInvocationAddSerializationOverride(call.get(), BQStringGetTypeID(), Meddler::serialize, &context);
    const void *name = BQSTR("a"), *value = BQSTR("text");
    VXMethodInvocationSetParameters(call.get(), own(BQDictionaryCreate(&name, &value, 1)).get(), nullptr);
    auto result = call.invoke();
    EXPECT_EQ(VXMethodResultIsFault(result.get()) ? failureOf(result.get()) : valueOf(result.get()),
              row.expected);
    meddler.meddle = nullptr;
    EXPECT_EQ(valueOf(call.invoke().get()), "x") << "the next call is a new one";
    for (const BQString* mode : {BQSTR("VXSYNC"), BQSTR("elsewhere")}) {
      EXPECT_EQ(BQRunLoopRunInMode(mode, 0, true), kBQRunLoopRunFinished);
    }
  }
}

/* Calls another invocation from inside the callback of the first. */
TEST(Execution, CallbackMayCallSynchronously) {
  ScriptedPeer peer({replies({okResponse(replyBody("outer")), okResponse(replyBody("inner"))})});
  struct Nested {
    std::string url, outer, inner;
  } nested{peer.url(), {}, {}};
  TestCall call(peer.url());
  VXClientContext context = {0, &nested, nullptr, nullptr, nullptr};
  VXMethodInvocationSetCallBack(
      call.get(),
      [](VXMethodInvocationRef, void* info, const BQDictionary* result) {
        auto* state = static_cast<Nested*>(info);
        state->outer = valueOf(result);
        BQRelease(result);
        TestCall inner(state->url);
        state->inner = valueOf(inner.invoke().get());
      },
      &context);
  VXMethodInvocationScheduleWithRunLoop(call.get(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  runUntil(kBQRunLoopDefaultMode, [&] { return !nested.inner.empty(); });
  EXPECT_EQ(nested.outer, "outer");
  EXPECT_EQ(nested.inner, "inner");
}

/* The last reference goes at a time when the call is in some state. */
TEST(Execution, ReleaseOfAScheduledInvocationEndsItQuietly) {
  for (int passes : {0, 1, 2}) {
    ScriptedPeer peer({Script().expectRequest().waitForClose()});
    Recorder recorder;
    VXClientContext context = recorder.context();
    TestCall call(peer.url());
    VXMethodInvocationSetCallBack(call.get(), Recorder::receive, &context);
    VXMethodInvocationScheduleWithRunLoop(call.get(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
    for (int i = 0; i < passes; ++i) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, false);
    call.release();
    EXPECT_EQ(BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, false), kBQRunLoopRunFinished) << passes;
    EXPECT_EQ(recorder.delivered, 0);
    EXPECT_EQ(recorder.released, 1);
  }
}

}  // namespace
}  // namespace vx
