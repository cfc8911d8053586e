/* What a reply looks like, and what becomes of it. */
#include <gtest/gtest.h>

#include "platform/http/Exchange.h"
#include "support/ScriptedPeer.h"

namespace {

using values::integer;

struct Reply {
  const char* why;
  std::string bytes;
  /* The body, or the error in brackets. */
  std::string answer;
};

const std::string kHead = "HTTP/1.1 200 OK\r\n";
const std::string kChunkedHead = kHead + "Transfer-Encoding: chunked\r\n\r\n";

const Reply kReplies[] = {
    {"length", okResponse("hello"), "hello"},
    {"no body", okResponse(""), ""},
    {"until the connection closes", kHead + "A: b\r\n\r\nhello", "hello"},
    {"HTTP/1.0, no reason phrase", "HTTP/1.0 200\r\n\r\nhello", "hello"},
    {"bare line feeds", "HTTP/1.1 200 OK\nContent-Length: 2\n\nok", "ok"},
    {"chunk extension, trailer", kChunkedHead + "5;x=\"y\"\r\nhello\r\n0\r\nTrailer: v\r\n\r\n", "hello"},
    {"padded chunk sizes", kChunkedHead + "000A\r\n0123456789\r\n2\r\nab\r\n00\r\n\r\n", "0123456789ab"},
    {"interim responses",
     "HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 103 Hints\r\nLink: x\r\n\r\n" + okResponse("ok"), "ok"},
    {"no content", "HTTP/1.1 204 No Content\r\n\r\n", ""},
    {"server error", "HTTP/1.1 500 Oops\r\nContent-Length: 4\r\n\r\noops", "oops"},
    {"redirect that is not followed", "HTTP/1.1 302 Found\r\nLocation: /x\r\nContent-Length: 4\r\n\r\nbody",
     "body"},
    {"nothing", "", "(http 7)"},
    {"only an interim response", "HTTP/1.1 100 Continue\r\n\r\n", "(http 2)"},
    {"garbage", "SSH-2.0-OpenSSH_9.2p1\r\n", "(http 3)"},
    {"HTTP/0.9", "<html>hello</html>\r\n", "(http 3)"},
    {"status code of letters", "HTTP/1.1 abc OK\r\n\r\n", "(http 3)"},
    {"negative length", kHead + "Content-Length: -5\r\n\r\nhello", "(http 3)"},
    {"length of letters", kHead + "Content-Length: five\r\n\r\nhello", "(http 3)"},
};

TEST(Reply, IsDeliveredWholeOrAsAnErrorHoweverItIsSplit) {
  for (const Reply& reply : kReplies) {
    const bool fails = reply.answer.starts_with("(");
    for (size_t pieceSize : {size_t{1}, reply.bytes.size() + 1}) {
      SCOPED_TRACE(reply.why + std::string(" in pieces of ") + std::to_string(pieceSize));
      ScriptedPeer peer({Script().expectRequest().sendInPieces(reply.bytes, pieceSize)});
      Exchange exchange(peer.url());
      EXPECT_EQ(exchange.run().answer(), reply.answer);
      EXPECT_EQ(exchange.events(), fails ? "error" : reply.answer.empty() ? "open end" : "open bytes end");
      EXPECT_EQ(peer.requests().size(), 1u);
    }
  }
}

/* The head was there, so that the stream has reported something before. */
TEST(Reply, WithAMalformedBodyIsAnError) {
  for (const char* body :
       {"zz\r\nhello\r\n0\r\n\r\n", "-5\r\nhello\r\n0\r\n\r\n", "11111111111111111\r\nhello\r\n"}) {
    SCOPED_TRACE(body);
    ScriptedPeer peer({replyAndClose(kChunkedHead + body)});
    Exchange exchange(peer.url());
    EXPECT_EQ(exchange.run().answer(), "(http 3)");
    EXPECT_TRUE(exchange.events().ends_with("error")) << exchange.events();
    uint8_t byte;
    EXPECT_EQ(BQReadStreamRead(exchange.stream(), &byte, 1), -1);
    EXPECT_EQ(BQReadStreamGetStatus(exchange.stream()), kBQStreamStatusError);
  }
}

/* But for the last line feed of a chunked body, behind which nothing can follow. */
TEST(Reply, CutAtAnyByteIsAnError) {
  for (const std::string& whole : {okResponse("hello"), kChunkedHead + "3\r\nhel\r\n2\r\nlo\r\n0\r\n\r"}) {
    for (size_t length = 0; length < whole.size(); ++length) {
      for (bool isReset : {false, true}) {
        SCOPED_TRACE(whole.substr(0, length) + (isReset ? " reset" : " closed"));
        Script script = Script().expectRequest().send(whole.substr(0, length));
        ScriptedPeer peer({isReset ? script.reset() : script});
        Exchange exchange(peer.url());
        const std::string closed = length == 0 ? "(http 7)" : "(http 2)";
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

TEST(Reply, HeadersWithoutEndAreRefused) {
  const std::pair<std::string, const char*> table[] = {
      {kHead, "Name: value\r\n"},
      {kHead + "Name: ", "xxxxxxxxxx"},
      {"", "HTTP/1.1 100 Continue\r\n\r\n"},
      {kChunkedHead + "0\r\n", "Trailer: value\r\n"},
  };
  for (const auto& [start, rest] : table) {
    ScriptedPeer peer({Script().expectRequest().send(start).sendEndlessly(rest)});
    EXPECT_EQ(Exchange(peer.url()).run().answer(), "(http 6)") << start << rest;
  }
}

TEST(Reply, LargerThanTheLimitIsRefused) {
  for (size_t size : {1000, 1001}) {
    const std::string body(size, 'x');
    for (const std::string& bytes :
         {okResponse(body), kHead + "\r\n" + body,
          kChunkedHead + (size == 1000 ? "3e8" : "3e9") + "\r\n" + body + "\r\n0\r\n\r\n"}) {
      ScriptedPeer peer({replyAndClose(bytes)});
      Exchange exchange(peer.url());
      exchange.property(kBQStreamPropertyHTTPMaximumReplySize, integer(1000).get()).run();
      EXPECT_EQ(exchange.answer(), size == 1000 ? body : "(http 6)") << bytes;
    }
  }
}

TEST(Reply, WithoutEndStopsAtTheLimit) {
  ScriptedPeer peer({Script().expectRequest().send(kHead + "\r\n").sendEndlessly("xxxxxxxxxxxxxxxx")});
  Exchange exchange(peer.url());
  exchange.property(kBQStreamPropertyHTTPMaximumReplySize, integer(5'000'000).get()).run();
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
