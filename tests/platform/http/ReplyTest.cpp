/* What a reply looks like, and what becomes of it. */
#include <gtest/gtest.h>

#include "platform/http/Exchange.h"
#include "support/ScriptedPeer.h"

namespace {

struct Reply {
  const char* why;
  std::string bytes;
  const char* events;
  std::string body;
  const char* error;
};

const std::string kChunkedHead = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";

const Reply kReplies[] = {
    {"length", okResponse("hello"), "open bytes end", "hello", "none"},
    {"no body", okResponse(""), "open end", "", "none"},
    {"until the connection closes", "HTTP/1.1 200 OK\r\nA: b\r\n\r\nhello", "open bytes end", "hello",
     "none"},
    {"HTTP/1.0", "HTTP/1.0 200 OK\r\n\r\nhello", "open bytes end", "hello", "none"},
    {"no reason phrase", "HTTP/1.1 200\r\nContent-Length: 2\r\n\r\nok", "open bytes end", "ok", "none"},
    {"bare line feeds", "HTTP/1.1 200 OK\nContent-Length: 2\n\nok", "open bytes end", "ok", "none"},
    {"chunks", kChunkedHead + "2\r\nhe\r\n3\r\nllo\r\n0\r\n\r\n", "open bytes end", "hello", "none"},
    {"chunk extension, trailer", kChunkedHead + "5;x=\"y\"\r\nhello\r\n0\r\nTrailer: v\r\n\r\n",
     "open bytes end", "hello", "none"},
    {"upper-case and padded chunk sizes", kChunkedHead + "000A\r\n0123456789\r\n00\r\n\r\n", "open bytes end",
     "0123456789", "none"},
    {"100 first", "HTTP/1.1 100 Continue\r\nX: y\r\n\r\n" + okResponse("ok"), "open bytes end", "ok", "none"},
    {"many interim responses",
     "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 102 Processing\r\n\r\nHTTP/1.1 103 Hints\r\nLink: x\r\n\r\n" +
         okResponse("ok"),
     "open bytes end", "ok", "none"},
    {"no content", "HTTP/1.1 204 No Content\r\n\r\n", "open end", "", "none"},
    {"server error", "HTTP/1.1 500 Oops\r\nContent-Length: 4\r\n\r\noops", "open bytes end", "oops", "none"},
    {"redirect that is not followed", "HTTP/1.1 302 Found\r\nLocation: /x\r\nContent-Length: 4\r\n\r\nbody",
     "open bytes end", "body", "none"},
    {"nothing", "", "error", "", "http 7"},
    {"only an interim response", "HTTP/1.1 100 Continue\r\n\r\n", "error", "", "http 2"},
    {"part of the status line", "HTTP/1.1 20", "error", "", "http 2"},
    {"part of the headers", "HTTP/1.1 200 OK\r\nContent-Le", "error", "", "http 2"},
    {"headers without an end", "HTTP/1.1 200 OK\r\nContent-Length: 5\r\n", "error", "", "http 2"},
    {"garbage", "SSH-2.0-OpenSSH_9.2p1\r\n", "error", "", "http 3"},
    {"HTTP/0.9", "<html>hello</html>\r\n", "error", "", "http 3"},
    {"status code of letters", "HTTP/1.1 abc OK\r\n\r\n", "error", "", "http 3"},
    {"negative length", "HTTP/1.1 200 OK\r\nContent-Length: -5\r\n\r\nhello", "error", "", "http 3"},
    {"length of letters", "HTTP/1.1 200 OK\r\nContent-Length: five\r\n\r\nhello", "error", "", "http 3"},
};

TEST(Reply, IsDeliveredWholeOrAsAnError) {
  for (const Reply& reply : kReplies) {
    SCOPED_TRACE(reply.why);
    ScriptedPeer peer({replyAndClose(reply.bytes)});
    Exchange exchange(peer.url());
    exchange.run();
    EXPECT_EQ(exchange.events(), reply.events);
    EXPECT_EQ(exchange.body(), reply.body);
    EXPECT_EQ(exchange.error(), reply.error);
    EXPECT_EQ(peer.requests().size(), 1u);
  }
}

TEST(Reply, DoesNotDependOnHowItIsSplit) {
  for (const Reply& reply : kReplies) {
    SCOPED_TRACE(reply.why);
    ScriptedPeer peer({Script().expectRequest().sendInPieces(reply.bytes, 1)});
    Exchange exchange(peer.url());
    exchange.run();
    EXPECT_EQ(exchange.events(), reply.events);
    EXPECT_EQ(exchange.body(), reply.body);
    EXPECT_EQ(exchange.error(), reply.error);
  }
}

/* Replies whose head is there break off in the body, so that the stream reported something before. */
TEST(Reply, ThatBreaksOffInItsBodyIsAnError) {
  const struct {
    std::string bytes;
    const char* error;
  } table[] = {
      {"HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhello", "http 2"},
      {kChunkedHead + "5\r\nhel", "http 2"},
      {kChunkedHead + "5\r\nhello\r\n", "http 2"},
      {kChunkedHead + "5\r\nhello\r\n0\r\n", "http 2"},
      {kChunkedHead + "zz\r\nhello\r\n0\r\n\r\n", "http 3"},
      {kChunkedHead + "-5\r\nhello\r\n0\r\n\r\n", "http 3"},
      {kChunkedHead + "11111111111111111\r\nhello\r\n", "http 3"},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.bytes);
    ScriptedPeer peer({replyAndClose(row.bytes)});
    Exchange exchange(peer.url());
    exchange.run();
    EXPECT_TRUE(exchange.events().ends_with("error")) << exchange.events();
    EXPECT_EQ(exchange.error(), row.error);
    uint8_t byte;
    EXPECT_EQ(BQReadStreamRead(exchange.stream(), &byte, 1), -1);
    EXPECT_EQ(BQReadStreamGetStatus(exchange.stream()), kBQStreamStatusError);
  }
}

/* But for the last line feed of a chunked body, behind which nothing can follow. */
TEST(Reply, CutAtAnyByteIsAnError) {
  for (const std::string& whole : {okResponse("hello"), kChunkedHead + "3\r\nhel\r\n2\r\nlo\r\n0\r\n\r"}) {
    for (size_t length = 1; length < whole.size(); ++length) {
      SCOPED_TRACE(whole.substr(0, length));
      ScriptedPeer peer({replyAndClose(whole.substr(0, length))});
      Exchange exchange(peer.url());
      exchange.run();
      EXPECT_TRUE(exchange.events().ends_with("error")) << exchange.events();
      EXPECT_EQ(exchange.error(), "http 2");
    }
  }
}

TEST(Reply, ResetAtAnyByteIsAnError) {
  const std::string whole = okResponse("hello");
  for (size_t length = 0; length < whole.size(); ++length) {
    SCOPED_TRACE(whole.substr(0, length));
    ScriptedPeer peer({Script().expectRequest().send(whole.substr(0, length)).reset()});
    Exchange exchange(peer.url());
    exchange.run();
    EXPECT_TRUE(exchange.events().ends_with("error")) << exchange.events();
    EXPECT_EQ(exchange.error(), "posix " + std::to_string(ECONNRESET));
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

TEST(Reply, HeadersWithoutEndAreRefused) {
  const std::pair<const char*, Script> table[] = {
      {"many lines", Script().expectRequest().send("HTTP/1.1 200 OK\r\n").sendEndlessly("Name: value\r\n")},
      {"one long line",
       Script().expectRequest().send("HTTP/1.1 200 OK\r\nName: ").sendEndlessly("xxxxxxxxxx")},
      {"interim responses", Script().expectRequest().sendEndlessly("HTTP/1.1 100 Continue\r\n\r\n")},
      {"trailers", Script().expectRequest().send(kChunkedHead + "0\r\n").sendEndlessly("Trailer: value\r\n")},
  };
  for (const auto& [why, script] : table) {
    SCOPED_TRACE(why);
    ScriptedPeer peer({script});
    Exchange exchange(peer.url());
    exchange.run();
    EXPECT_EQ(exchange.error(), "http 6");
  }
}

TEST(Reply, LargerThanTheLimitIsRefused) {
  const struct {
    std::string bytes;
    bool isRefused;
  } table[] = {
      {okResponse(std::string(1000, 'x')), false},
      {okResponse(std::string(1001, 'x')), true},
      {"HTTP/1.1 200 OK\r\n\r\n" + std::string(1000, 'x'), false},
      {"HTTP/1.1 200 OK\r\n\r\n" + std::string(1001, 'x'), true},
      {kChunkedHead + "3e8\r\n" + std::string(1000, 'x') + "\r\n0\r\n\r\n", false},
      {kChunkedHead + "3e9\r\n" + std::string(1001, 'x') + "\r\n0\r\n\r\n", true},
  };
  for (const auto& row : table) {
    ScriptedPeer peer({replyAndClose(row.bytes)});
    Exchange exchange(peer.url());
    exchange.property(kBQStreamPropertyHTTPMaximumReplySize, number(1000).get()).run();
    EXPECT_EQ(exchange.error(), row.isRefused ? "http 6" : "none") << row.bytes;
  }
}

TEST(Reply, WithoutEndStopsAtTheLimit) {
  ScriptedPeer peer(
      {Script().expectRequest().send("HTTP/1.1 200 OK\r\n\r\n").sendEndlessly("xxxxxxxxxxxxxxxx")});
  Exchange exchange(peer.url());
  exchange.property(kBQStreamPropertyHTTPMaximumReplySize, number(5'000'000).get()).run();
  EXPECT_EQ(exchange.error(), "http 6");
  EXPECT_LE(exchange.body().size(), 5'000'000u);
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
