#include "LoopbackServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace support {
namespace {

[[noreturn]] void fail(const char* what) {
  std::perror(what);
  std::exit(1);
}

/* The length of the first whole request in `bytes`, or 0 if it is not all there. */
size_t measureRequest(std::string_view bytes) {
  constexpr std::string_view kLength = "\r\ncontent-length:", kEnd = "\r\n\r\n";
  const size_t head = bytes.find(kEnd);
  if (head == std::string_view::npos) return 0;
  size_t body = 0;
  for (size_t line = 0; line < head; line = bytes.find("\r\n", line + 2)) {
    if (strncasecmp(bytes.data() + line, kLength.data(), kLength.size()) == 0) {
      body = std::strtoul(bytes.data() + line + kLength.size(), nullptr, 10);
    }
  }
  const size_t total = head + kEnd.size() + body;
  return bytes.size() < total ? 0 : total;
}

bool sendAll(int socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(count));
  }
  return true;
}

struct Connection {
  int socket;
  std::string received;
};

class Server {
 public:
  Server(int listener, int lifeline, LoopbackServer::Answerer answer)
      : listener_(listener), lifeline_(lifeline), answer_(std::move(answer)) {}

  void run() {
    for (;;) {
      std::vector<pollfd> waits = {{lifeline_, POLLIN, 0}, {listener_, POLLIN, 0}};
      for (const Connection& connection : connections_) waits.push_back({connection.socket, POLLIN, 0});
      if (poll(waits.data(), waits.size(), -1) < 0 || waits[0].revents != 0) return;
      for (size_t index = connections_.size(); index-- > 0;) {
        if (waits[index + 2].revents == 0 || serve(connections_[index])) continue;
        close(connections_[index].socket);
        connections_.erase(connections_.begin() + static_cast<std::ptrdiff_t>(index));
      }
      if (waits[1].revents != 0) acceptConnection();
    }
  }

 private:
  void acceptConnection() {
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) return;
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    connections_.push_back({socket, {}});
  }

  /* False if the connection is to be closed. */
  bool serve(Connection& connection) {
    char bytes[16384];
    const ssize_t count = recv(connection.socket, bytes, sizeof bytes, 0);
    if (count <= 0) return false;
    connection.received.append(bytes, static_cast<size_t>(count));
    while (const size_t length = measureRequest(connection.received)) {
      const auto answer = answer_(std::string_view(connection.received).substr(0, length));
      connection.received.erase(0, length);
      if (!sendAll(connection.socket, answer.bytes)) return false;
      if (answer.then == LoopbackServer::Then::reset) {
        const linger hard{1, 0};
        setsockopt(connection.socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
      }
      if (answer.then != LoopbackServer::Then::keep) return false;
    }
    return true;
  }

  int listener_;
  int lifeline_;
  LoopbackServer::Answerer answer_;
  std::vector<Connection> connections_;
};

int listenOnLoopback(uint16_t& port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (listener < 0 || bind(listener, generic, size) != 0 || listen(listener, 64) != 0 ||
      getsockname(listener, generic, &size) != 0) {
    fail("no socket to listen on");
  }
  port = ntohs(address.sin_port);
  return listener;
}

}  // namespace

LoopbackServer::LoopbackServer(const std::function<Answerer()>& prepare) {
  const int listener = listenOnLoopback(port_);
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) fail("no pipe");
  process_ = fork();
  if (process_ < 0) fail("no process");
  if (process_ == 0) {
    close(ends[1]);
    Server(listener, ends[0], prepare()).run();
    _exit(0);
  }
  close(listener);
  close(ends[0]);
  lifeline_ = ends[1];
}

LoopbackServer::~LoopbackServer() {
  close(lifeline_);
  waitpid(process_, nullptr, 0);
}

std::string LoopbackServer::url(std::string_view path) const {
  return "http://127.0.0.1:" + std::to_string(port_) + std::string(path);
}

}  // namespace support
