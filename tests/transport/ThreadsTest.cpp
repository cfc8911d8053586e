/* Threads and processes that use the library at the same time, each with objects of its own. */
#include <sys/wait.h>
#include <unistd.h>

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
    succeeded += handlersAgree(protocol, value) && outcomeOf(call.invoke()) == "ok";
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

TEST(Fork, GivesTheChildConnectionsOfItsOwn) {
  const std::string reply = anyReply(kVXXMLRPCProtocol);
  ScriptedPeer peer({replies({reply, reply, reply}), replies({reply, reply})});
  auto call = [&peer] { return outcomeOf(TestCall(peer.url()).invoke()); };
  EXPECT_EQ(call(), "ok");
  const pid_t child = fork();
  if (child == 0) _exit(call() == "ok" && call() == "ok" ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(call(), "ok");
  EXPECT_EQ(call(), "ok");
  EXPECT_EQ(peer.connectionCount(), 2u);
}

}  // namespace
}  // namespace vx
