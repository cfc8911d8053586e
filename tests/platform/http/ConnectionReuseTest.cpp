/* Which connection a request takes, and when it is sent a second time. */
#include <poll.h>
#include <sys/socket.h>

#include <thread>

#include <gtest/gtest.h>

#include "platform/http/Exchange.h"
#include "support/ScriptedPeer.h"

/* The thread waits for something to receive after it sent, and before it receives. */
thread_local bool doesSocketWait = false;

static void awaitBytes(int socket) {
  pollfd awaited{socket, POLLIN, 0};
  if (doesSocketWait) poll(&awaited, 1, -1);
}

/* In place of those of the C library, for libcurl too. */
extern "C" [[gnu::visibility("default")]] ssize_t send(int socket, const void* buffer, size_t size,
                                                       int flags) {
  ssize_t count = sendto(socket, buffer, size, flags, nullptr, 0);
  awaitBytes(socket);
  return count;
}

extern "C" [[gnu::visibility("default")]] ssize_t recv(int socket, void* buffer, size_t size, int flags) {
  awaitBytes(socket);
  return recvfrom(socket, buffer, size, flags, nullptr, nullptr);
}

namespace {

/* Runs requests to a peer one after the other; their answers, with blanks between. */
std::string call(const ScriptedPeer& peer, int count, const std::string& body = "<request/>") {
  std::string answers;
  for (int i = 0; i < count; ++i) {
    answers += (i == 0 ? "" : " ") + Exchange(peer.url(), "POST", body).run().answer();
  }
  return answers;
}

const std::string kOne = okResponse("one"), kTwo = okResponse("two"), kThree = okResponse("three");

TEST(ConnectionReuse, ConsecutiveRequestsShareAConnectionInWhateverMode) {
  ScriptedPeer peer({replies({kOne, kTwo, kThree})});
  EXPECT_EQ(call(peer, 2), "one two");
  Exchange exchange(peer.url());
  ASSERT_TRUE(exchange.open(BQSTR("another mode")));
  EXPECT_TRUE(Exchange::runUntil([&] { return exchange.isOver(); }, BQSTR("another mode")));
  EXPECT_EQ(exchange.body(), "three");
  EXPECT_EQ(peer.connectionCount(), 1u);
}

TEST(ConnectionReuse, IdleConnectionThatEndsDoesNotKeepTheLoopBusy) {
  ScriptedPeer peer({replyAndClose(kOne)});
  EXPECT_EQ(call(peer, 1), "one");
  while (peer.openConnectionCount() > 0) std::this_thread::yield();
  ScriptedPeer silent({Script().expectRequest().waitForClose()});
  Exchange waiting(silent.url());
  ASSERT_TRUE(waiting.open());
  auto isQuiet = [] { return BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, true) == kBQRunLoopRunTimedOut; };
  EXPECT_TRUE(Exchange::runUntil([&] { return isQuiet() && silent.requests().size() == 1; }));
  int quiet = 0;
  for (int pass = 0; pass < 100; ++pass) quiet += isQuiet() ? 1 : 0;
  EXPECT_GE(quiet, 99);
}

TEST(ConnectionReuse, ReplyThatNobodyAskedForIsNotThatToTheNextRequest) {
  Gate isIdle;
  Script unasked = Script().expectRequest().send(kOne).waitFor(isIdle).send(kTwo);
  ScriptedPeer peer({unasked, reply(kThree)});
  EXPECT_EQ(call(peer, 1), "one");
  isIdle.open();
  while (peer.openConnectionCount() > 0) std::this_thread::yield();
  EXPECT_EQ(call(peer, 1), "three");
}

TEST(ConnectionReuse, LargeReplyMayArriveWhileItsRequestIsSent) {
  std::string body(1'000'000, 'x');
  ScriptedPeer peer({replies({kOne, okResponse(body)})});
  EXPECT_EQ(call(peer, 1), "one");
  Exchange large(peer.url());
  int passes = 0;
  large.readsBytes = false;
  doesSocketWait = true;
  EXPECT_TRUE(large.open());
  doesSocketWait = false;
  ASSERT_TRUE(Exchange::runUntil([&] { return ++passes > 2; }));
  large.readsBytes = true;
  ASSERT_TRUE(Exchange::runUntil([&] { return large.isOver(); }));
  EXPECT_TRUE(large.answer() == body);
}

/* Two connections wait; the second is as dead as the first, and must not get the request again. */
TEST(ConnectionReuse, RequestIsSentAgainOnANewConnection) {
  Gate bothWait;
  Script held = Script().expectRequest().waitFor(bothWait).send(kOne).expectRequest();
  ScriptedPeer peer({held, held, reply(kTwo)});
  Exchange first(peer.url()), second(peer.url());
  ASSERT_TRUE(first.open() && second.open());
  ASSERT_TRUE(Exchange::runUntil([&] { return peer.requests().size() == 2 || first.isOver(); }));
  bothWait.open();
  ASSERT_TRUE(Exchange::runUntil([&] { return first.isOver() && second.isOver(); }));
  first.releaseStream();
  second.releaseStream();
  EXPECT_EQ(call(peer, 1), "two");
  EXPECT_EQ(peer.connectionCount(), 3u);
  EXPECT_EQ(peer.requests().size(), 4u);
}

TEST(ConnectionReuse, RequestIsNotSentAgainWithoutItsExpectation) {
  ScriptedPeer peer(
      {Script().expectFirstBytes().send("HTTP/1.1 417 No\r\nContent-Length: 0\r\n\r\n").then(reply(kOne))});
  Exchange exchange(peer.url());
  EXPECT_EQ(exchange.header("Expect", "100-continue").run().answer(), "");
  EXPECT_EQ(exchange.statusLine(), "HTTP/1.1 417 No");
}

TEST(ConnectionReuse, ErrorOfOneRequestDoesNotColourTheNext) {
  Exchange refused("http://127.0.0.1:" + std::to_string(closedPort()) + "/");
  refused.run();
  EXPECT_EQ(refused.error(), "posix " + std::to_string(ECONNREFUSED));
  refused.releaseStream();
  ScriptedPeer peer({replyAndClose("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n")});
  EXPECT_EQ(call(peer, 1), "(http 3)");
}

}  // namespace
