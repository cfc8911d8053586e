/* Replies and connections that need more than a row of exchanges.cases. */
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>

#include <thread>

#include "platform/http/Exchange.h"

/* Whether the thread waits, after it sent and before it receives, until there is something to receive. */
thread_local bool awaitsBytes = false;

static void awaitBytes(int socket) {
  pollfd awaited{socket, POLLIN, 0};
  if (awaitsBytes) poll(&awaited, 1, -1);
}

/* In place of those of the C library, for libcurl too. */
extern "C" [[gnu::visibility("default")]] ssize_t send(int socket, const void* bytes, size_t size,
                                                       int flags) {
  ssize_t count = sendto(socket, bytes, size, flags, nullptr, 0);
  awaitBytes(socket);
  return count;
}

extern "C" [[gnu::visibility("default")]] ssize_t recv(int socket, void* bytes, size_t size, int flags) {
  awaitBytes(socket);
  return recvfrom(socket, bytes, size, flags, nullptr, nullptr);
}

namespace {

const std::string kOne = okResponse("one"), kTwo = okResponse("two"), kThree = okResponse("three");

/* libcurl does not tell a cut status line from nothing. No chunked body ends with its last line feed here. */
TEST(Reply, CutAtAnyByteIsAnError) {
  const std::string chunked = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\none\r\n0\r\n\r";
  for (const std::string& whole : {kOne, chunked}) {
    for (size_t length = 0; length < whole.size(); ++length) {
      for (bool isReset : {false, true}) {
        Script script = Script().expectRequest().send(whole.substr(0, length));
        ScriptedPeer peer({isReset ? script.reset() : script});
        Exchange exchange(peer.url());
        const char* expected = isReset ? "(posix 104)" : length <= whole.find('\n') ? "(http 7)" : "(http 2)";
        EXPECT_EQ(exchange.run().answer(), expected) << whole.substr(0, length);
        EXPECT_TRUE(exchange.events().ends_with("error")) << exchange.events();
        EXPECT_EQ(peer.requests().size(), 1u) << "nothing is sent again on a new connection";
      }
    }
  }
}

TEST(Reply, ToHeadHasNoBodyAndTheFinalResponseIsKept) {
  ScriptedPeer peer(
      {replies({"HTTP/1.1 200 OK\r\nContent-Length: 9999999999999\r\n\r\n",
                "HTTP/1.1 100 Continue\r\nX: interim\r\n\r\nHTTP/1.1 404 Not Here\r\nX: final\r\n"
                "Transfer-Encoding: chunked\r\n\r\n0\r\nX: trailer\r\n\r\n"})});
  Exchange head(peer.url(), "HEAD", ""), post(peer.url());
  EXPECT_EQ(head.run().events(), "open end");
  EXPECT_EQ(head.responseHeader("Content-Length"), "9999999999999");
  EXPECT_EQ(post.run().statusLine(), "HTTP/1.1 404 Not Here");
  EXPECT_EQ(post.responseHeader("X"), "final");
}

/* A reader that does not read makes the peer wait; then everything arrives in order. */
TEST(Reply, LargeOnesAreHeldBackUntilTheyAreRead) {
  std::string body;
  for (int i = 0; body.size() < 8'000'000; ++i) body += std::to_string(i) + ",";
  ScriptedPeer peer({reply(okResponse(body))});
  Exchange exchange(peer.url());
  exchange.readsBytes = false;
  int events = 0;
  ASSERT_TRUE(exchange.open());
  exchange.onEvent = [&](BQStreamEventType) { ++events; };
  ASSERT_TRUE(runUntil([&] { return events > 1000; }));
  std::string start(body.size(), '\0');
  BQIndex count = BQReadStreamRead(exchange.stream(), reinterpret_cast<uint8_t*>(start.data()),
                                   static_cast<BQIndex>(start.size()));
  EXPECT_LE(count, 512 * 1024);
  start.resize(static_cast<size_t>(count));
  exchange.readsBytes = true;
  ASSERT_TRUE(exchange.runToEnd());
  EXPECT_EQ(exchange.events(), "open bytes end");
  EXPECT_TRUE(start + exchange.body() == body);
}

TEST(Reply, LargeOneMayArriveWhileItsRequestIsSentOnAKeptConnection) {
  const std::string body(1'000'000, 'x');
  ScriptedPeer peer({replies({kOne, okResponse(body)})});
  EXPECT_EQ(Exchange(peer.url()).run().answer(), "one");
  Exchange large(peer.url());
  large.readsBytes = false;
  awaitsBytes = true;
  EXPECT_TRUE(large.open());
  awaitsBytes = false;
  for (int pass = 0; pass < 3; ++pass) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, true);
  large.readsBytes = true;
  ASSERT_TRUE(runUntil([&] { return large.isOver(); }));
  EXPECT_TRUE(large.answer() == body);
}

TEST(Reply, ThatRefusesAnExpectationIsFinal) {
  ScriptedPeer peer(
      {Script().expectFirstBytes().send("HTTP/1.1 417 No\r\nContent-Length: 0\r\n\r\n").then(reply(kOne))});
  Exchange exchange(peer.url());
  EXPECT_EQ(exchange.header("Expect", "100-continue").run().answer(), "");
  EXPECT_EQ(exchange.statusLine(), "HTTP/1.1 417 No");
}

TEST(Reply, OfRequestsForANewHandshakeEndsTheFirst) {
  const char request[] = "\x16\x03\x03\0\4\0\0\0";
  ScriptedPeer peer({Script().expectFirstBytes().sendEndlessly(std::string(request, sizeof request))});
  EXPECT_EQ(Exchange("https" + peer.url().substr(4)).run().answer(), "(tls 1)");
}

TEST(ConnectionReuse, IdleConnectionThatEndsDoesNotKeepTheLoopBusy) {
  ScriptedPeer peer({replyAndClose(kOne)}), silent({Script().expectRequest().waitForClose()});
  EXPECT_EQ(Exchange(peer.url()).run().answer(), "one");
  while (peer.openConnectionCount() > 0) std::this_thread::yield();
  Exchange waiting(silent.url());
  ASSERT_TRUE(waiting.open());
  auto isQuiet = [] { return BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, true) == kBQRunLoopRunTimedOut; };
  EXPECT_TRUE(runUntil([&] { return isQuiet() && silent.requests().size() == 1; }));
  int quiet = 0;
  for (int pass = 0; pass < 100; ++pass) quiet += isQuiet() ? 1 : 0;
  EXPECT_GE(quiet, 99);
}

TEST(ConnectionReuse, ReplyThatNobodyAskedForIsNotThatToTheNextRequest) {
  Gate isIdle;
  Script unasked = Script().expectRequest().send(kOne).waitFor(isIdle).send(kTwo);
  ScriptedPeer peer({unasked, reply(kThree)});
  EXPECT_EQ(Exchange(peer.url()).run().answer(), "one");
  isIdle.open();
  while (peer.openConnectionCount() > 0) std::this_thread::yield();
  EXPECT_EQ(Exchange(peer.url()).run().answer(), "three");
}

/* Two connections wait; the second is as dead as the first, and must not get the request again. */
TEST(ConnectionReuse, RequestIsSentAgainOnANewConnection) {
  Gate bothWait;
  Script held = Script().expectRequest().waitFor(bothWait).send(kOne).expectRequest();
  ScriptedPeer peer({held, held, reply(kTwo)});
  {
    Exchange first(peer.url()), second(peer.url());
    ASSERT_TRUE(first.open() && second.open());
    ASSERT_TRUE(runUntil([&] { return peer.requests().size() == 2 || first.isOver(); }));
    bothWait.open();
    ASSERT_TRUE(first.runToEnd() && second.runToEnd());
  }
  EXPECT_EQ(Exchange(peer.url()).run().answer(), "two");
  EXPECT_EQ(peer.connectionCount(), 3u);
  EXPECT_EQ(peer.requests().size(), 4u);
}

}  // namespace
