#include "Responder.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sched.h>
#include <strings.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace bench {
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

struct Connection {
  int socket;
  std::string received;
};

class Server {
 public:
  Server(int listener, int lifeline, std::string response)
      : listener_(listener), lifeline_(lifeline), response_(std::move(response)) {}

  void run() {
    for (;;) {
      std::vector<pollfd> waits = {{lifeline_, POLLIN, 0}, {listener_, POLLIN, 0}};
      for (const Connection& connection : connections_) waits.push_back({connection.socket, POLLIN, 0});
      if (poll(waits.data(), waits.size(), -1) < 0 || waits[0].revents != 0) return;
      for (size_t index = connections_.size(); index-- > 0;) {
        if (waits[index + 2].revents != 0 && !serve(connections_[index])) {
          close(connections_[index].socket);
          connections_.erase(connections_.begin() + static_cast<ptrdiff_t>(index));
        }
      }
      if (waits[1].revents != 0) acceptConnection();
    }
  }

 private:
  void acceptConnection() {
    const int socket = accept(listener_, nullptr, nullptr);
    if (socket < 0) return;
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    connections_.push_back({socket, {}});
  }

  bool serve(Connection& connection) {
    char bytes[16384];
    const ssize_t count = recv(connection.socket, bytes, sizeof bytes, 0);
    if (count <= 0) return false;
    connection.received.append(bytes, static_cast<size_t>(count));
    while (const size_t length = measureRequest(connection.received)) {
      connection.received.erase(0, length);
      const ssize_t sent = send(connection.socket, response_.data(), response_.size(), MSG_NOSIGNAL);
      if (sent != static_cast<ssize_t>(response_.size())) return false;
    }
    return true;
  }

  int listener_;
  int lifeline_;
  std::string response_;
  std::vector<Connection> connections_;
};

std::string makeResponse(std::string_view body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + std::string(body);
}

int listenOnLoopback(uint16_t& port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (listener < 0 || bind(listener, generic, size) != 0 || listen(listener, 16) != 0 ||
      getsockname(listener, generic, &size) != 0) {
    fail("bench: no socket to listen on");
  }
  port = ntohs(address.sin_port);
  return listener;
}

}  // namespace

Responder::Responder(std::string_view body) {
  const int listener = listenOnLoopback(port_);
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) fail("bench: no pipe");
  process_ = fork();
  if (process_ < 0) fail("bench: no process");
  if (process_ == 0) {
    close(ends[1]);
    pinToProcessor(kServerProcessor);
    Server(listener, ends[0], makeResponse(body)).run();
    _exit(0);
  }
  pinToProcessor(kClientProcessor);
  close(listener);
  close(ends[0]);
  lifeline_ = ends[1];
}

Responder::~Responder() {
  close(lifeline_);
  waitpid(process_, nullptr, 0);
}

std::string Responder::url() const {
  return "http://127.0.0.1:" + std::to_string(port_) + "/RPC2";
}

bool pinToProcessor(int processor) {
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(processor, &set);
  return sched_setaffinity(0, sizeof set, &set) == 0;
}

}  // namespace bench
