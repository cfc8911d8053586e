/* Threads and processes that use the library at the same time, each with objects of its own. */
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <thread>

#include "Call.h"

namespace vx {
namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 30;

/* A call in a round's protocol, and a value by request and reply documents there and back. */
bool succeeds(int round, const std::string& url, const Value& value) {
  const BQString* protocol = kProtocols[round % 3];
  Value handle = Value::adopt(VXProtocolHandlerCreate(nullptr, protocol));
  auto* handler = handle.as<OpaqueVXProtocolHandlerRef>();
  Value document = Value::adopt(VXProtocolHandlerCopyRequestDocument(
      handler, BQSTR("m"), dictionary({{"p1", value}}), array({string("p1")}), nullptr));
  Value request = Value::adopt(VXProtocolHandlerCopyRequestDictionary(handler, document));
  Value answer = Value::adopt(VXProtocolHandlerCopyReplyDocument(handler, request, value));
  Value result = Value::adopt(VXProtocolHandlerCopyReplyDictionary(handler, BQSTR("m"), answer));
  return text(result.get()).find(text(value.get())) != std::string::npos &&
         TestCall(url, protocol).set(kVXDebugOutgoingBody, kBQBooleanTrue).invoke() == "ok";
}

/* The calls of a thread share a connection. If the test runs alone, they are the first of the process. */
TEST(Threads, HaveTheirOwnHandlersAndCalls) {
  std::vector<std::string> answers;
  for (int round = 0; round < kRounds; ++round) answers.push_back(anyReply(kProtocols[round % 3]));
  ScriptedPeer peer({replies(answers)});
  std::atomic<int> succeeded = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (int round = 0; round < kRounds; ++round)
        succeeded += succeeds(round, peer.url(), integer(1000 * thread + round)) ? 1 : 0;
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(succeeded, kThreads * kRounds);
  EXPECT_EQ(peer.connectionCount(), static_cast<size_t>(kThreads));
}

/* A search for leaks at its end would take the memory of the threads that it does not have for lost. */
[[noreturn]] void endChild(int status) {
#ifdef __SANITIZE_ADDRESS__
  _exit(status);
#else
  exit(status);
#endif
}

/* What the work of a child answers. */
bool succeedsInAChild(const std::function<bool()>& work) {
  const pid_t child = fork();
  if (child == 0) endChild(work() ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  return status == 0;
}

TEST(Fork, GivesTheChildConnectionsOfItsOwn) {
  ScriptedPeer peer({replies({kOK, kOK, kOK}), replies({kOK, kOK})});
  auto succeeds = [&peer] { return TestCall(peer.url()).invoke() == "ok"; };
  EXPECT_TRUE(succeeds());
  EXPECT_TRUE(succeedsInAChild([&] { return succeeds() && succeeds(); }));
  EXPECT_TRUE(succeedsInAChild([] { return true; }));
  EXPECT_TRUE(succeeds() && succeeds());
  EXPECT_EQ(peer.connectionCount(), 2u);
}

TEST(Fork, LeavesACallUnderWayToTheParent) {
  const std::function<void(Scheduled&)> works[] = {
      [](Scheduled&) {}, [](Scheduled&) { BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0.01, true); },
      [](Scheduled& scheduled) { scheduled.unschedule(); },
      [](Scheduled& scheduled) { EXPECT_EQ(TestCall(scheduled.address).invoke(), "ok"); }};
  for (const auto& work : works) {
    Gate gate;
    ScriptedPeer peer({Script().expectRequest().waitFor(gate).send(kOK), reply(kOK)});
    Scheduled scheduled(peer.url());
    scheduled.schedule();
    while (peer.requests().empty()) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0.001, true);
    EXPECT_TRUE(succeedsInAChild([&] {
      work(scheduled);
      return scheduled.outcomes.empty() && !testing::Test::HasFailure();
    }));
    gate.open();
    EXPECT_TRUE(scheduled.runUntilDelivered());
    EXPECT_EQ(scheduled.outcomes, std::vector<std::string>{"ok"});
  }
}

/* Not with the address sanitizer, whose look at virtual tables needs descriptors of its own. */
#ifndef __SANITIZE_ADDRESS__

TEST(Fork, ProcessWithoutDescriptorsGetsAFaultAndRecovers) {
  ScriptedPeer peer({replies({kOK, kOK, kOK})});
  for (rlim_t left = 0; left < 10; ++left) {
    EXPECT_TRUE(succeedsInAChild([&] {
      rlimit limit;
      getrlimit(RLIMIT_NOFILE, &limit);
      const int next = dup(0);
      close(next);
      rlimit tight = {std::min(static_cast<rlim_t>(next) + left, limit.rlim_max), limit.rlim_max};
      setrlimit(RLIMIT_NOFILE, &tight);
      Scheduled scheduled(peer.url());
      scheduled.schedule();
      bool ended = scheduled.runUntilDelivered() && scheduled.outcomes.size() == 1 && scheduled.result();
      setrlimit(RLIMIT_NOFILE, &limit);
      return ended && TestCall(peer.url()).invoke() == "ok";
    })) << left
        << " descriptors";
  }
}

#endif

}  // namespace
}  // namespace vx
