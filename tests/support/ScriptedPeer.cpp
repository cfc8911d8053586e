#include "support/ScriptedPeer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

/* A socket bound to a free port of the loopback interface, which is written; -1 without such an address. */
int bindToLoopback(bool useIPv6, int& port) {
  sockaddr_in6 ipv6 = {};
  ipv6.sin6_family = AF_INET6;
  ipv6.sin6_addr = in6addr_loopback;
  sockaddr_in ipv4 = {};
  ipv4.sin_family = AF_INET;
  ipv4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  auto* address = useIPv6 ? reinterpret_cast<sockaddr*>(&ipv6) : reinterpret_cast<sockaddr*>(&ipv4);
  socklen_t size = useIPv6 ? sizeof ipv6 : sizeof ipv4;
  int socket = ::socket(address->sa_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (socket < 0 || bind(socket, address, size) != 0) {
    if (socket >= 0) close(socket);
    return -1;
  }
  getsockname(socket, address, &size);
  port = ntohs(useIPv6 ? ipv6.sin6_port : ipv4.sin_port);
  return socket;
}

bool sendAll(int socket, const char* bytes, size_t size) {
  while (size > 0) {
    ssize_t sent = ::send(socket, bytes, size, MSG_NOSIGNAL);
    if (sent <= 0) return false;
    bytes += sent;
    size -= static_cast<size_t>(sent);
  }
  return true;
}

/* The length of the body that the head of a request announces. */
size_t bodyLength(const std::string& head) {
  static const std::string name = "\r\ncontent-length:";
  auto equal = [](char first, char second) { return strncasecmp(&first, &second, 1) == 0; };
  auto found = std::search(head.begin(), head.end(), name.begin(), name.end(), equal);
  return found == head.end() ? 0 : std::strtoul(&*found + name.size(), nullptr, 10);
}

}  // namespace

void Gate::open() {
  std::lock_guard lock(state_->mutex);
  state_->isOpen = true;
  state_->opened.notify_all();
}

void Gate::wait() {
  std::unique_lock lock(state_->mutex);
  state_->opened.wait(lock, [this] { return state_->isOpen; });
}

struct Script::Connection {
  ScriptedPeer& peer;
  int socket;
  std::string received;

  bool receive() {
    char buffer[65536];
    ssize_t count = recv(socket, buffer, sizeof buffer, 0);
    if (count <= 0) return false;
    received.append(buffer, static_cast<size_t>(count));
    return true;
  }

  bool receiveRequest() {
    size_t headEnd;
    while ((headEnd = received.find("\r\n\r\n")) == std::string::npos) {
      if (!receive()) return false;
    }
    size_t size = headEnd + 4 + bodyLength(received.substr(0, headEnd + 2));
    while (received.size() < size) {
      if (!receive()) return false;
    }
    peer.record(received.substr(0, size));
    received.erase(0, size);
    return true;
  }
};

Script& Script::add(Step step) {
  steps_.push_back(std::move(step));
  return *this;
}

Script& Script::expectRequest() {
  return add([](Connection& connection) { return connection.receiveRequest(); });
}

Script& Script::expectFirstBytes() {
  return add([](Connection& connection) {
    char byte;
    return recv(connection.socket, &byte, 1, MSG_PEEK) == 1;
  });
}

Script& Script::send(std::string bytes) {
  return add([bytes = std::move(bytes)](Connection& connection) {
    return sendAll(connection.socket, bytes.data(), bytes.size());
  });
}

Script& Script::sendInPieces(std::string bytes, size_t pieceSize) {
  return add([bytes = std::move(bytes), pieceSize](Connection& connection) {
    for (size_t start = 0; start < bytes.size(); start += pieceSize) {
      if (!sendAll(connection.socket, bytes.data() + start, std::min(pieceSize, bytes.size() - start))) {
        return false;
      }
      std::this_thread::yield();
    }
    return true;
  });
}

Script& Script::sendEndlessly(std::string bytes) {
  return add([bytes = std::move(bytes)](Connection& connection) {
    while (sendAll(connection.socket, bytes.data(), bytes.size())) {
    }
    return false;
  });
}

Script& Script::waitFor(Gate gate) {
  gates_.push_back(gate);
  return add([gate](Connection&) mutable {
    gate.wait();
    return true;
  });
}

Script& Script::waitForClose() {
  return add([](Connection& connection) {
    while (connection.receive()) {
    }
    return true;
  });
}

Script& Script::reset() {
  return add([](Connection& connection) {
    linger hard{1, 0};
    setsockopt(connection.socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    return false;
  });
}

Script& Script::then(const Script& other) {
  steps_.insert(steps_.end(), other.steps_.begin(), other.steps_.end());
  gates_.insert(gates_.end(), other.gates_.begin(), other.gates_.end());
  return *this;
}

Script reply(std::string bytes) {
  return Script().expectRequest().send(std::move(bytes)).waitForClose();
}

Script replyAndClose(std::string bytes) {
  return Script().expectRequest().send(std::move(bytes));
}

Script replies(const std::vector<std::string>& bytes) {
  Script script;
  for (const std::string& response : bytes) script.expectRequest().send(response);
  return script.waitForClose();
}

std::string okResponse(const std::string& body, const std::string& contentType) {
  return "HTTP/1.1 200 OK\r\nContent-Type: " + contentType +
         "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

ScriptedPeer::ScriptedPeer(std::vector<Script> scripts, bool useIPv6)
    : scripts_(std::move(scripts)), useIPv6_(useIPv6) {
  listener_ = bindToLoopback(useIPv6, port_);
  if (listener_ < 0 || listen(listener_, 64) != 0) return;
  acceptor_ = std::thread(&ScriptedPeer::acceptConnections, this);
}

ScriptedPeer::~ScriptedPeer() {
  for (Script& script : scripts_) {
    for (Gate& gate : script.gates_) gate.open();
  }
  {
    std::lock_guard lock(mutex_);
    isStopping_ = true;
    for (int socket : sockets_) shutdown(socket, SHUT_RDWR);
  }
  if (listener_ >= 0) shutdown(listener_, SHUT_RDWR);
  if (acceptor_.joinable()) acceptor_.join();
  for (std::thread& server : servers_) server.join();
  if (listener_ >= 0) close(listener_);
}

std::string ScriptedPeer::url(const std::string& path) const {
  return "http://" + std::string(useIPv6_ ? "[::1]:" : "127.0.0.1:") + std::to_string(port_) + path;
}

std::vector<std::string> ScriptedPeer::requests() const {
  std::lock_guard lock(mutex_);
  return requests_;
}

size_t ScriptedPeer::connectionCount() const {
  std::lock_guard lock(mutex_);
  return servers_.size();
}

size_t ScriptedPeer::openConnectionCount() const {
  std::lock_guard lock(mutex_);
  return sockets_.size();
}

void ScriptedPeer::acceptConnections() {
  for (;;) {
    int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) return;
    int yes = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    std::lock_guard lock(mutex_);
    if (isStopping_) {
      close(socket);
      return;
    }
    sockets_.push_back(socket);
    servers_.emplace_back(&ScriptedPeer::serve, this, socket, servers_.size());
  }
}

void ScriptedPeer::serve(int socket, size_t index) {
  Script::Connection connection{*this, socket, {}};
  const Script& script = scripts_[std::min(index, scripts_.size() - 1)];
  for (const Script::Step& step : script.steps_) {
    if (!step(connection)) break;
  }
  finish(socket);
}

void ScriptedPeer::record(std::string request) {
  std::lock_guard lock(mutex_);
  requests_.push_back(std::move(request));
}

void ScriptedPeer::finish(int socket) {
  std::lock_guard lock(mutex_);
  sockets_.erase(std::find(sockets_.begin(), sockets_.end(), socket));
  close(socket);
}

int closedPort() {
  int port = 0;
  int socket = bindToLoopback(false, port);
  close(socket);
  return port;
}
