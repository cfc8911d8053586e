/* Threads and processes that use the library at the same time, each with objects of its own. */
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <thread>

#include "Call.h"

namespace vx {
namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 30;

/* A value by request and reply documents there and back. */
bool handlersAgree(const BQString* protocol, const Value& value) {
  Value handle = Value::adopt(VXProtocolHandlerCreate(nullptr, protocol));
  auto* handler = handle.as<OpaqueVXProtocolHandlerRef>();
  Value document = Value::adopt(VXProtocolHandlerCopyRequestDocument(
      handler, BQSTR("m"), dictionary({{"p1", value}}), array({string("p1")}), nullptr));
  Value request = Value::adopt(VXProtocolHandlerCopyRequestDictionary(handler, document));
  Value answer = Value::adopt(VXProtocolHandlerCopyReplyDocument(handler, request, value));
  Value result = Value::adopt(VXProtocolHandlerCopyReplyDictionary(handler, BQSTR("m"), answer));
  return text(result.get()).find(text(value.get())) != std::string::npos;
}

/* The number of rounds that went well on one thread, whose calls share a connection. */
int rounds(int thread, const std::string& url) {
  int succeeded = 0;
  for (int round = 0; round < kRounds; ++round) {
    const BQString* protocol = kProtocols[round % 3];
    Value value = string("thread " + std::to_string(thread) + " round " + std::to_string(round));
    TestCall call(url, protocol);
    call.set(kVXDebugOutgoingBody, kBQBooleanTrue);
    succeeded += handlersAgree(protocol, value) && call.invoke() == "ok";
  }
  return succeeded;
}

/* Their first calls are the first of the process, if the test runs alone. */
TEST(Threads, HaveTheirOwnHandlersAndCalls) {
  std::vector<std::string> answers;
  for (int round = 0; round < kRounds; ++round) answers.push_back(anyReply(kProtocols[round % 3]));
  ScriptedPeer peer({replies(answers)});
  std::vector<int> succeeded(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] { succeeded[static_cast<size_t>(i)] = rounds(i, peer.url()); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(succeeded, std::vector<int>(kThreads, kRounds));
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
template <class Work>
bool succeedsInAChild(Work work) {
  const pid_t child = fork();
  if (child == 0) endChild(work() ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  return status == 0;
}

TEST(Fork, GivesTheChildConnectionsOfItsOwn) {
  const std::string reply = anyReply(kVXXMLRPCProtocol);
  ScriptedPeer peer({replies({reply, reply, reply}), replies({reply, reply})});
  auto succeeds = [&peer] { return TestCall(peer.url()).invoke() == "ok"; };
  EXPECT_TRUE(succeeds());
  EXPECT_TRUE(succeedsInAChild([&] { return succeeds() && succeeds(); }));
  EXPECT_TRUE(succeedsInAChild([] { return true; }));
  EXPECT_TRUE(succeeds());
  EXPECT_TRUE(succeeds());
  EXPECT_EQ(peer.connectionCount(), 2u);
}

TEST(Fork, LeavesACallUnderWayToTheParent) {
  const std::string reply = anyReply(kVXXMLRPCProtocol);
  const std::function<bool(Scheduled&)> works[] = {
      [](Scheduled&) { return true; },
      [](Scheduled& scheduled) {
        BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0.01, true);
        return scheduled.outcomes.empty();
      },
      [](Scheduled& scheduled) {
        scheduled.unschedule();
        return scheduled.outcomes.empty();
      },
      [](Scheduled& scheduled) { return TestCall(scheduled.address).invoke() == "ok"; },
  };
  for (const auto& work : works) {
    Gate gate;
    ScriptedPeer peer({Script().expectRequest().waitFor(gate).send(reply), replies({reply})});
    Scheduled scheduled(peer.url());
    scheduled.schedule();
    while (peer.requests().empty()) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0.001, true);
    EXPECT_TRUE(succeedsInAChild([&] { return work(scheduled); }));
    gate.open();
    EXPECT_TRUE(scheduled.runUntilDelivered());
    EXPECT_EQ(scheduled.outcomes, std::vector<std::string>{"ok"});
  }
}

}  // namespace
}  // namespace vx
