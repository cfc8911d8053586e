#include <gtest/gtest.h>

#include <tuple>

#include "platform/http/Exchange.h"
#include "platform/http/Redirect.h"
#include "support/ScriptedPeer.h"

namespace {

using namespace std::string_literals;

std::string redirect(int status, const std::string& location) {
  return "HTTP/1.1 " + std::to_string(status) + " Elsewhere\r\nLocation: " + location +
         "\r\nContent-Length: 4\r\n\r\nmove";
}

TEST(Redirect, KeepsMethodAndBodyButFor303) {
  const std::tuple<int, std::string, const char*, std::string> table[] = {
      {301, "POST", "x", "POST /b HTTP/1.1\r\nHost: h\r\nContent-Type: t\r\nContent-Length: 1\r\n\r\nx"},
      {303, "POST", "x", "GET /b HTTP/1.1\r\nHost: h\r\n\r\n"},
      {303, "HEAD", "", "HEAD /b HTTP/1.1\r\nHost: h\r\n\r\n"},
      {307, "PUT", "x", "PUT /b HTTP/1.1\r\nHost: h\r\nContent-Type: t\r\nContent-Length: 1\r\n\r\nx"},
      {308, "M-POST", "x", "M-POST /b HTTP/1.1\r\nHost: h\r\nContent-Type: t\r\nContent-Length: 1\r\n\r\nx"},
      {302, "GET", "", "GET /b HTTP/1.1\r\nHost: h\r\nContent-Type: t\r\n\r\n"},
  };
  for (const auto& [status, method, body, followed] : table) {
    SCOPED_TRACE(std::to_string(status) + method);
    std::string first = redirect(status, "/b");
    if (method == "HEAD") first.resize(first.size() - 4);
    ScriptedPeer peer({replies({first, "HTTP/1.1 204 Done\r\n\r\n"})});
    Exchange exchange(peer.url("/a"), method, body);
    exchange.header("Host", "h").header("Content-Type", "t").followRedirects().run();
    EXPECT_EQ(exchange.events(), "open end");
    EXPECT_EQ(exchange.statusLine(), "HTTP/1.1 204 Done");
    ASSERT_EQ(peer.requests().size(), 2u);
    EXPECT_EQ(peer.requests()[1], followed);
    EXPECT_EQ(peer.connectionCount(), 1u);
  }
}

TEST(Redirect, IsFollowedOnlyForRedirects) {
  for (const std::string& response : {redirect(300, "/b"), redirect(305, "/b"), redirect(201, "/b"),
                                      "HTTP/1.1 302 Where\r\nContent-Length: 4\r\n\r\nmove"s}) {
    ScriptedPeer peer({reply(response)});
    EXPECT_EQ(Exchange(peer.url()).followRedirects().run().answer(), "move") << response;
  }
}

TEST(Redirect, StopsAfterTwenty) {
  std::vector<std::string> responses(20, redirect(302, "/again"));
  responses.push_back(okResponse("found"));
  ScriptedPeer twenty({replies(responses)});
  EXPECT_EQ(Exchange(twenty.url()).followRedirects().run().answer(), "found");
  responses.insert(responses.begin(), redirect(302, "/again"));
  ScriptedPeer more({replies(responses)});
  EXPECT_EQ(Exchange(more.url()).followRedirects().run().answer(), "(http 4)");
  EXPECT_EQ(more.requests().size(), 21u);
}

TEST(Redirect, ToWhatIsNotHTTPIsAnError) {
  for (const char* location :
       {"ftp://host/", "file:///etc/passwd", "javascript:x", "http://", "http://h:99999/", "http://a b/"}) {
    SCOPED_TRACE(location);
    ScriptedPeer peer({reply(redirect(302, location))});
    Exchange exchange(peer.url());
    EXPECT_EQ(exchange.followRedirects().run().answer(), "(http 4)");
    EXPECT_EQ(exchange.events(), "error");
  }
}

/* What was meant for one host is not told another. */
TEST(Redirect, ToAnotherHostLosesHostAndSecrets) {
  ScriptedPeer target({reply(okResponse("there"))});
  ScriptedPeer peer({reply(redirect(307, target.url("/x")))});
  Exchange exchange(peer.url());
  exchange.header("Host", "first").header("Authorization", "secret").header("Cookie", "secret");
  exchange.header("Proxy-Authorization", "secret").header("X-Other", "kept").followRedirects().run();
  EXPECT_EQ(exchange.body(), "there");
  EXPECT_EQ(target.requests().at(0), "POST /x HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(target.port()) +
                                         "\r\nX-Other: kept\r\nContent-Length: 10\r\n\r\n<request/>");
}

TEST(Redirect, WithALongBodyIsFollowedWithoutReadingIt) {
  ScriptedPeer target({reply(okResponse("there"))});
  const std::string head = "HTTP/1.1 302 Found\r\nLocation: " + target.url() + "\r\n\r\n";
  ScriptedPeer peer({Script().expectRequest().send(head).sendEndlessly("xxxxxxxxxxxxxxxxxxxxxxxx")});
  EXPECT_EQ(Exchange(peer.url()).followRedirects().run().answer(), "there");
}

TEST(Redirect, TargetIsResolvedAndComparedWithItsOrigin) {
  const struct {
    const char* url;
    const char* location;
    const char* target;
    bool isSameOrigin;
  } table[] = {
      {"http://h/a/b?q#f", "c", "http://h/a/c", true},
      {"http://h/a", "//H:80/b", "http://H:80/b", true},
      {"http://h/a", "https://h/a", "https://h/a", false},
      {"http://h/a", "http://h:81/a", "http://h:81/a", false},
      {"https://h/a", "https://h:443/b", "https://h:443/b", true},
      {"http://h/a", "http://i/a", "http://i/a", false},
      {"http://u:p@h/a", "/b", "http://u:p@h/b", true},
      {"http://u:p@h/a", "//i/b", "http://i/b", false},
      {"http://h/a", "/\xC3\xA9", "http://h/%c3%a9", true},
      {"http://h/a", "\x01", "", false},
  };
  for (const auto& row : table) {
    SCOPED_TRACE(row.location);
    bq::RedirectTarget target = bq::resolveRedirect(row.url, row.location);
    EXPECT_EQ(target.url, row.target);
    EXPECT_EQ(target.isSameOrigin, row.isSameOrigin);
  }
}

}  // namespace
