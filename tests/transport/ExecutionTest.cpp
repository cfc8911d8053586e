/* Calls that are made at once or scheduled on a run loop, and there released, taken off or made again. */
#include <memory>
#include <thread>

#include "Call.h"

namespace vx {
namespace {

using Outcomes = std::vector<std::string>;

BQRunLoopRunResult runOnce(BQAbsoluteTime seconds = 0) {
  return BQRunLoopRunInMode(kBQRunLoopDefaultMode, seconds, seconds > 0);
}

TEST(Execution, SynchronousCallLeavesOtherModesAloneAndKeepsItsConnection) {
  ScriptedPeer peer({replies({okResponse(replyBody("one")), okResponse(replyBody("two"))})});
  int fired = 0;
  BQRunLoopTimerContext context = {0, &fired, nullptr, nullptr, nullptr};
  auto count = [](BQRunLoopTimer*, void* info) { ++*static_cast<int*>(info); };
  Value timer =
      Value::adopt(BQRunLoopTimerCreate(BQAbsoluteTimeGetCurrent() - 1, 0.001, 0, 0, count, &context));
  BQRunLoopAddTimer(BQRunLoopGetCurrent(), timer.as<BQRunLoopTimer>(), kBQRunLoopDefaultMode);
  TestCall call(peer.url());
  for (const char* expected : {"one", "two"}) EXPECT_EQ(call.invoke(), expected);
  EXPECT_EQ(fired, 0);
  runOnce();
  EXPECT_EQ(fired, 1);
  EXPECT_EQ(peer.connectionCount(), 1u);
  BQRunLoopTimerInvalidate(timer.as<BQRunLoopTimer>());
}

/* Each does something inside the callback that ends its own call. */
TEST(Execution, CallbacksMayDoAnythingToTheirInvocation) {
  const struct {
    const char* what;
    void (*then)(Scheduled&);
    size_t requests;
  } rows[] = {
      {"release it", [](Scheduled& self) { self.release(); }, 1},
      {"take it off and release it", [](Scheduled& self) { self.unschedule(), self.release(); }, 1},
      {"remove the callback",
       [](Scheduled& self) { VXMethodInvocationSetCallBack(self.get(), nullptr, nullptr); }, 1},
      {"schedule it again",
       [](Scheduled& self) {
         if (self.outcomes.size() == 1) self.schedule();
       },
       2},
      {"invoke it and release it",
       [](Scheduled& self) { self.outcomes.push_back(self.invoke()), self.release(); }, 2},
      {"invoke another", [](Scheduled& self) { self.outcomes.push_back(TestCall(self.address).invoke()); },
       2},
  };
  for (bool succeeds : {true, false}) {
    for (const auto& row : rows) {
      SCOPED_TRACE(std::string(row.what) + (succeeds ? ", result" : ", error"));
      ScriptedPeer peer({succeeds ? replies({kOK, kOK}) : Script().expectRequest().send("x")});
      Scheduled call(peer.url());
      call.then = row.then;
      call.schedule();
      EXPECT_TRUE(runUntil([&] { return call.outcomes.size() == row.requests; }));
      for (int i = 0; i < 5; ++i) runOnce();
      EXPECT_EQ(call.outcomes.size(), row.requests);
      EXPECT_EQ(peer.requests().size(), row.requests);
      EXPECT_EQ(call.outcomes.front() == "ok", succeeds) << call.outcomes.front();
    }
  }
}

/* The last reference goes at a time when the call is in some state. */
TEST(Execution, ReleaseOfAScheduledInvocationEndsItQuietly) {
  for (int passes : {0, 1, 2}) {
    ScriptedPeer peer({Script().expectRequest().waitForClose()});
    Scheduled call(peer.url());
    call.schedule();
    for (int i = 0; i < passes; ++i) runOnce();
    EXPECT_EQ(call.released, 0);
    call.release();
    EXPECT_EQ(runOnce(), kBQRunLoopRunFinished) << passes;
    EXPECT_EQ(call.outcomes, Outcomes{});
    EXPECT_EQ(call.retained, 1);
    EXPECT_EQ(call.released, 1);
  }
}

TEST(Execution, CallOnTwoModesGoesOnInEither) {
  ScriptedPeer peer({replies(Outcomes(4, kOK))});
  const BQString *first = BQSTR("first"), *second = BQSTR("second");
  for (const BQString* last : {first, second}) {
    for (bool leavesFirst : {false, true}) {
      Scheduled call(peer.url());
      call.schedule(first);
      call.schedule(second);
      BQRunLoopRunInMode(first, 0, true);
      if (leavesFirst) call.unschedule(first);
      EXPECT_TRUE(call.runUntilDelivered(leavesFirst ? second : last));
      for (const BQString* mode : {first, second}) BQRunLoopRunInMode(mode, 0, true);
      EXPECT_EQ(call.outcomes, Outcomes{"ok"});
    }
  }
}

TEST(Execution, CallTakenOffItsModeLeavesItQuiet) {
  Gate gate;
  ScriptedPeer peer({Script().expectRequest().send("HTTP/1.1 200 OK\r\n\r\n<a>").waitFor(gate)});
  Scheduled call(peer.url());
  call.set(kVXMethodInvocationTimeoutValue, 60);
  call.schedule();
  ASSERT_TRUE(runUntil([&] { return peer.requests().size() == 1; }));
  call.unschedule();
  EXPECT_EQ(runOnce(), kBQRunLoopRunFinished);
  EXPECT_EQ(call.outcomes, Outcomes{});
}

/* In each state of the scheduled call, which is given up, with its callback. */
TEST(Execution, InvokingAScheduledCallMakesANewOne) {
  for (int passes = 0; passes < 4; ++passes) {
    Gate gate;
    Script given = Script().expectRequest().send("HTTP/1.1 200 OK\r\n\r\n<").waitFor(gate);
    ScriptedPeer peer({passes == 0 ? reply(kOK) : given, reply(kOK)});
    Scheduled call(peer.url());
    call.schedule();
    for (int i = 0; i < passes; ++i) runOnce(5);
    EXPECT_EQ(call.invoke(), "ok") << passes;
    EXPECT_EQ(call.released, 1);
    call.release();
    EXPECT_EQ(call.outcomes, Outcomes{});
    EXPECT_EQ(call.released, 1);
  }
}

/* The thread ends while its calls wait in some state; their memory goes with it. */
TEST(Execution, ThreadsMayEndWithCallsUnderWay) {
  ScriptedPeer peer({Script().expectRequest().send("HTTP/1.1 200 OK\r\n\r\n<").waitForClose()});
  for (int passes = 0; passes < 4; ++passes) {
    for (bool releasesFirst : {false, true}) {
      std::unique_ptr<Scheduled> kept;
      std::thread([&] {
        kept = std::make_unique<Scheduled>(peer.url());
        kept->schedule();
        for (int i = 0; i < passes; ++i) runOnce(5);
        if (releasesFirst) kept = nullptr;
      }).join();
      EXPECT_TRUE(kept == nullptr || kept->outcomes.empty());
    }
  }
}

/* More calls than a process has descriptors for wait for each other. */
TEST(Execution, TenThousandCallsAtOnceAreAllServed) {
  constexpr size_t kCalls = 10000, kConnections = 100;
  Gate gate;
  ScriptedPeer peer({Script().expectRequest().waitFor(gate).send(kOK).then(replies(Outcomes(kCalls, kOK)))});
  std::vector<std::unique_ptr<Scheduled>> calls;
  for (size_t i = 0; i < kCalls; ++i) {
    calls.push_back(std::make_unique<Scheduled>(peer.url()));
    calls.back()->set(kVXHTTPConnectionLimit, kConnections);
    calls.back()->schedule();
  }
  while (peer.requests().size() < kConnections) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0.01, true);
  while (runOnce() == kBQRunLoopRunHandledSource) continue;
  EXPECT_EQ(peer.connectionCount(), kConnections);
  gate.open();
  for (auto& call : calls) EXPECT_TRUE(call->runUntilDelivered());
  for (auto& call : calls) EXPECT_EQ(call->outcomes, Outcomes{"ok"});
  EXPECT_EQ(peer.requests().size(), kCalls);
}

}  // namespace
}  // namespace vx
