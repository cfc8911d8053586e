/* What is sent, and where. */
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <tuple>

#include "platform/http/Exchange.h"
#include "platform/http/Redirect.h"

namespace {

using values::string;

std::string sentBy(Exchange& exchange, const ScriptedPeer& peer) {
  exchange.run();
  auto requests = peer.requests();
  return requests.empty() ? "" : requests.back();
}

/* The request line, the body, and what follows the Host header. */
TEST(Request, IsNoMoreThanWasAskedFor) {
  const std::tuple<std::string, const char*, const char*> table[] = {
      {"POST /RPC2?a=b HTTP/1.1", "x", "Content-Length: 1\r\n\r\nx"},
      {"POST / HTTP/1.1", "", "Content-Length: 0\r\n\r\n"},
      {"PUT /a/../b HTTP/1.0", "x", "Content-Length: 1\r\n\r\nx"},
      {"PUT / HTTP/1.1", "", "Content-Length: 0\r\n\r\n"},
      {"GET / HTTP/1.1", "x", "Content-Length: 1\r\n\r\nx"},
      {"get / HTTP/1.1", "", "\r\n"},
      {"HEAD / HTTP/1.1", "x", "\r\n"},
      {"DELETE / HTTP/1.1", "", "\r\n"},
  };
  /* One peer and connection for all, so that nothing of one request is left for the next. */
  ScriptedPeer peer({replies(std::vector<std::string>(std::size(table), "HTTP/1.1 204 Done\r\n\r\n"))});
  for (const auto& [line, body, rest] : table) {
    std::string method, path, version;
    std::istringstream(line) >> method >> path >> version;
    Exchange exchange(peer.url(path), method, body, string(version).get());
    EXPECT_EQ(sentBy(exchange.header("Host", "h"), peer), line + "\r\nHost: h\r\n" + rest);
  }
}

TEST(Request, HeadersAreThoseOfTheMessageWhenTheStreamWasMade) {
  ScriptedPeer peer({reply(okResponse(""))});
  const std::string host = "127.0.0.1:" + std::to_string(peer.port());
  Exchange exchange("http://user:secret@" + host + "/", "POST", "body");
  exchange.header("User-Agent", "Test/1").header("X-Empty", "").header("X-Two", " 2");
  exchange.header("Content-Length", "99").header("Transfer-Encoding", "chunked");
  exchange.stream();
  exchange.header("X-Late", "1");
  EXPECT_EQ(sentBy(exchange, peer), "POST / HTTP/1.1\r\nHost: " + host +
                                        "\r\nAuthorization: Basic dXNlcjpzZWNyZXQ=\r\nUser-Agent: Test/1\r\n"
                                        "X-Empty:\r\nX-Two:  2\r\nContent-Length: 4\r\n\r\nbody");
}

TEST(Request, GoesThroughTheProxyOfItsPropertiesNotOfTheEnvironment) {
  ScriptedPeer peer({reply(okResponse("direct")), reply(okResponse("proxied"))});
  setenv("http_proxy", "http://127.0.0.1:1", 1);
  setenv("ALL_PROXY", "http://127.0.0.1:1", 1);
  EXPECT_EQ(Exchange(peer.url()).run().answer(), "direct");
  unsetenv("http_proxy");
  unsetenv("ALL_PROXY");
  setenv("no_proxy", "*", 1);
  Exchange exchange("http://somewhere.test/RPC2", "POST", "x");
  exchange.header("Host", "h").proxy("127.0.0.1", peer.port());
  EXPECT_EQ(sentBy(exchange, peer),
            "POST http://somewhere.test/RPC2 HTTP/1.1\r\nHost: h\r\nContent-Length: 1\r\n\r\nx");
  unsetenv("no_proxy");
  EXPECT_EQ(exchange.body(), "proxied");
}

TEST(Request, RefusalOfATunnelIsAnErrorEvenIfItIsEndless) {
  ScriptedPeer peer({replyAndClose("HTTP/1.1 403 No\r\nContent-Length: 0\r\n\r\n"),
                     Script().expectRequest().send("HTTP/1.1 407 Who\r\n\r\n").sendEndlessly("xxxxxxxx")});
  for (int i = 0; i < 2; ++i) {
    Exchange exchange("https://somewhere.test/", "POST", "secret");
    exchange.header("Authorization", "secret").header("User-Agent", "Test/1");
    EXPECT_EQ(sentBy(exchange.proxy("127.0.0.1", peer.port()), peer),
              "CONNECT somewhere.test:443 HTTP/1.1\r\nHost: somewhere.test:443\r\n\r\n");
    EXPECT_EQ(exchange.events() + exchange.answer(), "error(http 5)");
  }
}

/* No resolver asks anybody for a label of more than 63 characters. */
TEST(Request, GoesToTheAddressOrIsAnError) {
  const std::string unheardOf = std::string(64, 'a') + ".test";
  ScriptedPeer peer({reply(okResponse("found"))});
  ScriptedPeer odd({reply("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n")});
  const std::pair<std::string, std::string> table[] = {
      {"localhost:" + std::to_string(peer.port()), "found"},
      {"127.0.0.1:" + std::to_string(closedPort()), "(posix " + std::to_string(ECONNREFUSED) + ")"},
      {"127.0.0.1:" + std::to_string(odd.port()), "(http 3)"}, /* not an error of the row before */
      {unheardOf, "(resolver 1)"}};
  for (const auto& [host, answer] : table) {
    EXPECT_EQ(Exchange("http://" + host + "/").run().answer(), answer) << host;
  }
  EXPECT_EQ(Exchange("http://127.0.0.1/").proxy(unheardOf, 80).run().answer(), "(resolver 2)");
}

TEST(Request, UnusableOnesAreRefusedWhenOpened) {
  auto expectRefusal = [](Exchange& exchange, const std::string& error) {
    EXPECT_FALSE(exchange.open());
    EXPECT_EQ(exchange.answer(), error);
    EXPECT_EQ(BQReadStreamGetStatus(exchange.stream()), kBQStreamStatusError);
  };
  for (const char* address : {"ftp://host/", "http:///x", "mailto:a@b"}) {
    SCOPED_TRACE(address);
    Exchange exchange(address);
    expectRefusal(exchange, "(http 1)");
  }
  const std::pair<const char*, int> proxies[] = {
      {"host", 0}, {"host", 65536}, {"", 80}, {"socks5://host", 80}, {"us@er", 80}, {"a b", 80}, {"h/x", 80}};
  for (const auto& [host, port] : proxies) {
    SCOPED_TRACE(host);
    Exchange exchange("http://127.0.0.1/");
    expectRefusal(exchange.proxy(host, port), "(http 5)");
  }
  Exchange unlimited("http://127.0.0.1/");
  EXPECT_FALSE(unlimited.property(kBQStreamPropertyHTTPMaximumReplySize, values::integer(-1).get()).open());
  const std::string fifo = testing::TempDir() + "request-test-" + std::to_string(getpid());
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const std::string& file : {std::string(), std::string("/no/such/file"), std::string("/dev/zero"),
                                  std::string("/"), fifo, std::string("/proc/self/maps")}) {
    SCOPED_TRACE(file);
    Exchange exchange("http://127.0.0.1/");
    auto path = string(file);
    expectRefusal(exchange.property(kBQStreamPropertyTLSCertificateAuthorityFile, path.get()),
                  file.empty() || file == "/no/such/file" ? "(posix 2)" : "(posix 22)");
  }
  unlink(fifo.c_str());
}

/* The server of the openssl tool, which ends after two connections. */
TEST(TLS, CertificateIsVerifiedUnlessSwitchedOff) {
  FILE* server = popen(
      "exec 2>&1 </dev/null; key=$(mktemp); openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 "
      "-nodes "
      "-subj /CN=other -keyout $key -out $key; timeout 60 openssl s_server -accept 127.0.0.1:0 -naccept 2 "
      "-www "
      "-cert $key; rm $key",
      "re");
  char line[200] = "";
  while (strncmp(line, "ACCEPT ", 7) != 0) ASSERT_NE(fgets(line, sizeof line, server), nullptr) << line;
  const std::string url = "https://127.0.0.1:" + std::to_string(atoi(strrchr(line, ':') + 1)) + "/";
  EXPECT_EQ(Exchange(url, "GET", "").run().answer(), "(tls 2)");
  Exchange trusting(url, "GET", "");
  trusting.property(kBQStreamPropertyTLSVerifyPeer, kBQBooleanFalse).run();
  EXPECT_NE(trusting.answer().find("s_server"), std::string::npos) << trusting.answer();
  pclose(server);
}

std::string redirect(int status, const std::string& location) {
  return "HTTP/1.1 " + std::to_string(status) + " Elsewhere\r\nLocation: " + location + "\r\n";
}

TEST(Redirect, KeepsMethodAndBodyButFor303) {
  const std::string kept = "Content-Type: t\r\nContent-Length: 1\r\n\r\nx";
  const std::tuple<int, std::string, const char*, std::string, std::string> table[] = {
      {301, "POST", "x", "POST", kept},     {303, "POST", "x", "GET", "\r\n"},
      {303, "HEAD", "", "HEAD", "\r\n"},    {307, "PUT", "x", "PUT", kept},
      {308, "M-POST", "x", "M-POST", kept}, {302, "GET", "", "GET", "Content-Type: t\r\n\r\n"}};
  for (const auto& [status, method, body, nextMethod, rest] : table) {
    SCOPED_TRACE(std::to_string(status) + method);
    std::string moved =
        redirect(status, "/b") + "Content-Length: 4\r\n\r\n" + (method == "HEAD" ? "" : "move");
    ScriptedPeer peer({replies({moved, "HTTP/1.1 204 Done\r\n\r\n"})});
    Exchange exchange(peer.url("/a"), method, body);
    exchange.header("Host", "h").header("Content-Type", "t").followRedirects();
    EXPECT_EQ(sentBy(exchange, peer), nextMethod + " /b HTTP/1.1\r\nHost: h\r\n" + rest);
    EXPECT_EQ(exchange.events() + " " + exchange.statusLine(), "open end HTTP/1.1 204 Done");
    EXPECT_EQ(peer.connectionCount(), 1u);
  }
}

/* What was meant for one host is not told another. The body is not read, and has no end. */
TEST(Redirect, ToAnotherHostLosesHostAndSecrets) {
  ScriptedPeer target({reply(okResponse("there"))});
  ScriptedPeer peer(
      {Script().expectRequest().send(redirect(307, target.url("/x")) + "\r\n").sendEndlessly("xxxxxxxx")});
  Exchange exchange(peer.url());
  exchange.header("Host", "first").header("Authorization", "secret").header("Cookie", "secret");
  exchange.header("Proxy-Authorization", "secret").header("X-Other", "kept").followRedirects();
  EXPECT_EQ(sentBy(exchange, target), "POST /x HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(target.port()) +
                                          "\r\nX-Other: kept\r\nContent-Length: 10\r\n\r\n<request/>");
  EXPECT_EQ(exchange.body(), "there");
}

/* A URL, a location, the URL of the target, empty if there is none, and whether the origin is the same. */
TEST(Redirect, TargetIsResolvedAndComparedWithItsOrigin) {
  const std::tuple<const char*, const char*, const char*, bool> table[] = {
      {"http://h/a/b?q#f", "c", "http://h/a/c", true},
      {"http://h/a", "//H:80/b", "http://H:80/b", true},
      {"http://h/a", "https://h/a", "https://h/a", false},
      {"http://h/a", "http://h:81/a", "http://h:81/a", false},
      {"https://h/a", "https://h:443/b", "https://h:443/b", true},
      {"http://u:p@h/a", "/b", "http://u:p@h/b", true},
      {"http://u:p@h/a", "//i/b", "http://i/b", false},
      {"http://h/a", "/\xC3\xA9", "http://h/%c3%a9", true},
      {"http://h/a", "\x01", "", false},
  };
  for (const auto& [url, location, target, isSameOrigin] : table) {
    bq::RedirectTarget resolved = bq::resolveRedirect(url, location);
    EXPECT_EQ(resolved.url, target) << location;
    EXPECT_EQ(resolved.isSameOrigin, isSameOrigin) << location;
  }
}

}  // namespace
