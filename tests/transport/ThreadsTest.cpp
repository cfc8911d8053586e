/* Threads that use the library at the same time, each with objects of its own. */
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "Call.h"

namespace vx {
namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 30;

/* A value by request and reply documents there and back. */
bool handlersAgree(const BQString* protocol, const BQString* text) {
  auto handle = own(static_cast<const void*>(VXProtocolHandlerCreate(nullptr, protocol)));
  auto handler = static_cast<VXProtocolHandlerRef>(const_cast<void*>(handle.get()));
  const void *name = BQSTR("p1"), *value = text;
  auto parameters = own(BQDictionaryCreate(&name, &value, 1));
  auto order = own(BQArrayCreate(&name, 1));
  auto document =
      own(VXProtocolHandlerCopyRequestDocument(handler, BQSTR("m"), parameters.get(), order.get(), nullptr));
  auto request = own(VXProtocolHandlerCopyRequestDictionary(handler, document.get()));
  auto answer = own(VXProtocolHandlerCopyReplyDocument(handler, request.get(), text));
  auto result = own(VXProtocolHandlerCopyReplyDictionary(handler, BQSTR("m"), answer.get()));
  return textOfObject(result.get()).find(textOfObject(text)) != std::string::npos;
}

/* The number of rounds that went well on one thread, whose calls share a connection. */
int rounds(int thread, const std::string& url) {
  int succeeded = 0;
  for (int round = 0; round < kRounds; ++round) {
    const BQString* protocol = kProtocols[round % 3];
    auto text = makeText("thread " + std::to_string(thread) + " round " + std::to_string(round));
    TestCall call(url, protocol);
    call.set(kVXDebugOutgoingBody, kBQBooleanTrue);
    succeeded += handlersAgree(protocol, text.get()) && outcomeOf(call.invoke().get()) == "ok";
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

}  // namespace
}  // namespace vx
