/* Addresses that do not answer, and a process without descriptors. */
#include <arpa/inet.h>
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
  EXPECT_EQ(outcomeOf(call.invoke()), "Timed Out -1 -65796");
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
