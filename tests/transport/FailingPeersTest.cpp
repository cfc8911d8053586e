/* Peers, proxies and machines that fail: every call ends once, with the right fault, and the next works. */
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "Call.h"

namespace vx {
namespace {

std::string streamError(BQStreamErrorDomain domain, int error) {
  return "Stream Error " + std::to_string(domain) + " " + std::to_string(error);
}

std::string http(BQStreamHTTPError error) {
  return streamError(kBQStreamErrorDomainHTTP, error);
}

const std::string kReset = streamError(kBQStreamErrorDomainPOSIX, ECONNRESET);
const std::string kTimedOut = "Timed Out -1 -65796";
const std::string kHead = "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\n";
const std::string kChunks = kHead + "Transfer-Encoding: chunked\r\n\r\n";

Script stalled(const std::string& bytes) {
  return Script().expectRequest().send(bytes).waitForClose();
}

/* A response whose length says something else than its body. */
std::string withLength(size_t length) {
  return kHead + "Content-Length: " + std::to_string(length) + "\r\n\r\n" + replyBody("ok");
}

std::string redirect(const std::string& location) {
  return "HTTP/1.1 302 Found\r\nLocation: " + location + "\r\nContent-Length: 0\r\n\r\n";
}

std::string repeated(const std::string& text, size_t times) {
  std::string result;
  while (times-- > 0) result += text;
  return result;
}

struct Row {
  const char* why;
  Script script;
  std::string outcome;
  /* Seconds, where the peer does not end it. */
  int limit = 0;
};

std::vector<Row> peers() {
  const std::string body = replyBody("ok");
  const Script endlessChunk =
      Script().expectRequest().send(kChunks + "5;").sendEndlessly("x=\"yyyyyyyyyyyyyyy\";");
  const Script endlessHeader = Script().expectRequest().send(kHead).sendEndlessly("Name: value\r\n");
  Script endlessRedirects;
  for (int i = 0; i < 21; ++i) endlessRedirects.expectRequest().send(redirect("/"));
  return {
      {"is reset without a byte", Script().expectRequest().reset(), kReset},
      {"is reset before the request was read", Script().expectFirstBytes().reset(), kReset},
      {"is reset in its head", Script().expectRequest().send(kHead).reset(), kReset},
      {"is reset in its body", Script().expectRequest().send(kOK.substr(0, 120)).reset(), kReset},
      {"ends in a chunk", replyAndClose(kChunks + "ff\r\n<a"), http(kBQStreamHTTPErrorConnectionLost)},
      {"stalls before its head", stalled(""), kTimedOut, 1},
      {"stalls in its body", stalled(kOK.substr(0, 120)), kTimedOut, 1},
      {"is shorter than it says", replyAndClose(withLength(body.size() + 1)),
       http(kBQStreamHTTPErrorConnectionLost)},
      {"is longer than it says", replyAndClose(withLength(body.size()) + "<!-- more -->"), "ok"},
      {"is followed by another", replyAndClose(kOK + okResponse(replyBody("smuggled"))), "ok"},
      {"names two lengths",
       replyAndClose(kHead + "Content-Length: 5\r\n" + withLength(body.size()).substr(kHead.size())),
       http(kBQStreamHTTPErrorParse)},
      {"names one length twice",
       replyAndClose(kHead + "Content-Length: " + std::to_string(body.size()) + "\r\n" +
                     withLength(body.size()).substr(kHead.size())),
       "ok"},
      {"has a length of 20 digits", replyAndClose(kHead + "Content-Length: 99999999999999999999\r\n\r\n"),
       http(kBQStreamHTTPErrorReplyTooLarge)},
      {"has a length beyond the limit", replyAndClose(kHead + "Content-Length: 1073741825\r\n\r\n"),
       http(kBQStreamHTTPErrorReplyTooLarge)},
      {"has no end of a header", endlessHeader, http(kBQStreamHTTPErrorReplyTooLarge)},
      {"has no end of a chunk's extension", endlessChunk, http(kBQStreamHTTPErrorReplyTooLarge)},
      {"has a status line of nonsense", replyAndClose("HTTP/9 what\r\n\r\n"), http(kBQStreamHTTPErrorParse)},
      {"is not HTTP", replyAndClose("220 mail.example ESMTP\r\n"), http(kBQStreamHTTPErrorParse)},
      {"comes behind many interim ones",
       replyAndClose(repeated("HTTP/1.1 103 Hints\r\nLink: x\r\n\r\n", 1000) + kOK), "ok"},
      {"comes behind too many interim ones",
       replyAndClose(repeated("HTTP/1.1 103 Hints\r\nLink: x\r\n\r\n", 10000) + kOK),
       http(kBQStreamHTTPErrorReplyTooLarge)},
      {"switches the protocol", replyAndClose("HTTP/1.1 101 Switching\r\nUpgrade: x\r\n\r\n"),
       http(kBQStreamHTTPErrorConnectionLost)},
      {"redirects in a loop", endlessRedirects, http(kBQStreamHTTPErrorRedirect)},
      {"redirects to a file", replyAndClose(redirect("file:///etc/hostname")),
       http(kBQStreamHTTPErrorRedirect)},
      {"redirects to a closed port",
       replyAndClose(redirect("http://127.0.0.1:" + std::to_string(closedPort()) + "/")),
       streamError(kBQStreamErrorDomainPOSIX, ECONNREFUSED)},
      {"closes without saying so", replyAndClose(kOK), "ok"},
  };
}

TEST(FailingPeers, EndTheCallOnceAndTheNextOneWorks) {
  for (const Row& row : peers()) {
    SCOPED_TRACE(std::string("a reply that ") + row.why);
    ScriptedPeer peer({row.script, reply(kOK)});
    Scheduled call(peer.url());
    call.call.set(kVXMethodInvocationTimeoutValue, row.limit);
    call.schedule();
    EXPECT_TRUE(call.runUntilDelivered());
    for (int i = 0; i < 5; ++i) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, true);
    EXPECT_EQ(call.outcomes, std::vector<std::string>{row.outcome});
    EXPECT_LE(peer.connectionCount(), 1u) << "sent again";
    EXPECT_EQ(outcomeOf(TestCall(peer.url()).invoke()), "ok");
  }
}

TEST(FailingPeers, ProxiesThatRefuse) {
  const std::pair<Script, std::string> rows[] = {
      {replyAndClose("HTTP/1.1 407 Who\r\nContent-Length: 0\r\n\r\n"), "HTTP/1.1 407 Who -1 -65795"},
      {replyAndClose("HTTP/1.1 502 Bad\r\nContent-Length: 0\r\n\r\n"), "HTTP/1.1 502 Bad -1 -65795"},
      {replyAndClose(""), http(kBQStreamHTTPErrorEmptyReply)},
      {Script().expectRequest().reset(), kReset},
      {replyAndClose("nonsense\r\n\r\n"), http(kBQStreamHTTPErrorParse)},
  };
  for (const auto& [script, outcome] : rows) {
    ScriptedPeer proxy({script, reply(kOK)});
    TestCall call("http://unreachable.invalid/");
    call.set(kVXHTTPProxy, url(proxy.url()).get());
    EXPECT_EQ(outcomeOf(call.invoke()), outcome);
    EXPECT_EQ(outcomeOf(call.invoke()), "ok");
  }
}

/* An address whose queue of connections is full does not answer. */
TEST(FailingPeers, AddressThatDoesNotAnswerIsGivenUpInTime) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(bind(listener, generic, size) + listen(listener, 0) + getsockname(listener, generic, &size), 0);
  std::vector<int> filling(4);
  for (int& client : filling) {
    client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    connect(client, generic, size);
  }
  TestCall call("http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/");
  call.set(kVXMethodInvocationTimeoutValue, 1);
  EXPECT_EQ(outcomeOf(call.invoke()), kTimedOut);
  for (int client : filling) close(client);
  close(listener);
}

/* Not with the address sanitizer, whose look at virtual tables needs descriptors of its own. */
#ifndef __SANITIZE_ADDRESS__

/* The number that the next descriptor gets, and with it how many are in use. */
rlim_t nextDescriptor() {
  int descriptor = dup(0);
  close(descriptor);
  return static_cast<rlim_t>(descriptor);
}

/* In a process of its own, whose calls find `left` descriptors; then they find enough. */
int callWithDescriptors(const std::string& url, rlim_t left) {
  pid_t child = fork();
  if (child == 0) {
    rlimit limit;
    getrlimit(RLIMIT_NOFILE, &limit);
    rlimit tight = {std::min(nextDescriptor() + left, limit.rlim_max), limit.rlim_max};
    setrlimit(RLIMIT_NOFILE, &tight);
    Scheduled scheduled(url);
    scheduled.schedule();
    bool endedOnce = scheduled.runUntilDelivered() && scheduled.outcomes.size() == 1;
    bool ended = endedOnce && scheduled.call.invoke().get() != nullptr;
    setrlimit(RLIMIT_NOFILE, &limit);
    bool recovered = outcomeOf(TestCall(url).invoke()) == "ok";
    _exit((ended ? 0 : 1) + (recovered ? 0 : 2));
  }
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(FailingPeers, ProcessWithoutDescriptorsGetsAFaultAndRecovers) {
  ScriptedPeer peer({replies({kOK, kOK, kOK})});
  for (rlim_t left = 0; left < 10; ++left) {
    EXPECT_EQ(callWithDescriptors(peer.url(), left), 0) << left << " descriptors";
  }
}

#endif

}  // namespace
}  // namespace vx
