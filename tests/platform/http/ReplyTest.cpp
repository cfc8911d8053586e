/* Replies that need more than a row of exchanges.cases. */
#include <gtest/gtest.h>

#include "platform/http/Exchange.h"
#include "support/ScriptedPeer.h"

namespace {

const std::string kChunkedHead = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";

/* The last line feed of a chunked body is left out: nothing can follow it. */
TEST(Reply, CutAtAnyByteIsAnError) {
  for (const std::string& whole : {okResponse("hello"), kChunkedHead + "3\r\nhel\r\n2\r\nlo\r\n0\r\n\r"}) {
    for (size_t length = 0; length < whole.size(); ++length) {
      for (bool isReset : {false, true}) {
        SCOPED_TRACE(whole.substr(0, length) + (isReset ? " reset" : " closed"));
        Script script = Script().expectRequest().send(whole.substr(0, length));
        ScriptedPeer peer({isReset ? script.reset() : script});
        Exchange exchange(peer.url());
        const std::string closed = length <= whole.find('\n') ? "(http 7)" : "(http 2)";
        EXPECT_EQ(exchange.run().answer(), isReset ? "(posix " + std::to_string(ECONNRESET) + ")" : closed);
        EXPECT_TRUE(exchange.events().ends_with("error")) << exchange.events();
        EXPECT_EQ(peer.requests().size(), 1u) << "nothing is sent again on a new connection";
      }
    }
  }
}

TEST(Reply, ToHeadHasNoBody) {
  ScriptedPeer peer({reply("HTTP/1.1 200 OK\r\nContent-Length: 9999999999999\r\n\r\n")});
  Exchange exchange(peer.url(), "HEAD", "");
  exchange.run();
  EXPECT_EQ(exchange.events(), "open end");
  EXPECT_EQ(exchange.responseHeader("Content-Length"), "9999999999999");
}

TEST(Reply, FinalResponseIsTheOneThatIsKept) {
  ScriptedPeer peer(
      {reply("HTTP/1.1 100 Continue\r\nX: interim\r\n\r\nHTTP/1.1 404 Not Here\r\nX: final\r\n"
             "Transfer-Encoding: chunked\r\n\r\n0\r\nX: trailer\r\n\r\n")});
  Exchange exchange(peer.url());
  exchange.run();
  EXPECT_EQ(exchange.statusLine(), "HTTP/1.1 404 Not Here");
  EXPECT_EQ(exchange.responseHeader("X"), "final");
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
  ASSERT_TRUE(Exchange::runUntil([&] { return events > 1000; }));
  std::string start(body.size(), '\0');
  BQIndex count = BQReadStreamRead(exchange.stream(), reinterpret_cast<uint8_t*>(start.data()),
                                   static_cast<BQIndex>(start.size()));
  EXPECT_LE(count, 512 * 1024);
  start.resize(static_cast<size_t>(count));
  exchange.readsBytes = true;
  ASSERT_TRUE(Exchange::runUntil([&] { return exchange.isOver(); }));
  EXPECT_EQ(exchange.events(), "open bytes end");
  EXPECT_TRUE(start + exchange.body() == body);
}

}  // namespace
