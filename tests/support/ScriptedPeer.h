/*
 * An HTTP server that does what a test tells it, right or wrong. It listens on a free port of the
 * loopback interface and runs in threads of its own.
 *
 *   ScriptedPeer peer({reply("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok")});
 *   ... a request to peer.url("/RPC2") ...
 *   EXPECT_EQ(peer.requests().size(), 1u);
 */
#ifndef SUPPORT_SCRIPTED_PEER_H
#define SUPPORT_SCRIPTED_PEER_H

#include <BQ/BQ.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <functional>
#include <memory>
#include <mutex>
#include <regex>
#include <set>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

/* Holds scripts up until the test opens it; copies are the same gate. */
class Gate {
 public:
  void open() {
    *isOpen_ = true;
    isOpen_->notify_all();
  }
  void wait() const { isOpen_->wait(false); }

 private:
  std::shared_ptr<std::atomic<bool>> isOpen_ = std::make_shared<std::atomic<bool>>(false);
};

/* What the peer does on one connection, step by step; at the end it closes the connection. */
class Script {
 public:
  /* Reads a request, its body included, and records it. The script ends if none comes. */
  Script& expectRequest() {
    return add([](Connection& connection) { return connection.receiveRequest(); });
  }
  /* Reads the first bytes of a request and no more. */
  Script& expectFirstBytes() {
    return add([](Connection& connection) {
      char byte;
      return recv(connection.socket, &byte, 1, MSG_PEEK) == 1;
    });
  }
  /* Sends the bytes in writes of this size, which can be packets of their own. */
  Script& send(std::string bytes, size_t size = SIZE_MAX) {
    return add([bytes = std::move(bytes), size](Connection& connection) {
      ssize_t sent = 0;
      for (size_t start = 0; start < bytes.size() && sent >= 0; start += static_cast<size_t>(sent)) {
        sent = ::send(connection.socket, &bytes[start], std::min(size, bytes.size() - start), MSG_NOSIGNAL);
      }
      return sent >= 0;
    });
  }
  /* Sends the bytes again and again until the other side closes. */
  Script& sendEndlessly(std::string bytes) {
    return add([step = Script().send(std::move(bytes)).steps_[0]](Connection& connection) {
      while (step(connection)) continue;
      return false;
    });
  }
  Script& waitFor(const Gate& gate) {
    gates_.push_back(gate);
    return add([gate](Connection&) {
      gate.wait();
      return true;
    });
  }
  /* Waits until the other side closes. */
  Script& waitForClose() {
    return add([](Connection& connection) {
      while (connection.receive()) continue;
      return true;
    });
  }
  /* Ends the connection with a reset. */
  Script& reset() {
    return add([](Connection& connection) {
      linger hard{1, 0};
      setsockopt(connection.socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
      return false;
    });
  }
  /* Goes on with another script, so many times. */
  Script& then(const Script& other, int times = 1) {
    for (; times > 0; --times) steps_.insert(steps_.end(), other.steps_.begin(), other.steps_.end());
    gates_.insert(gates_.end(), other.gates_.begin(), other.gates_.end());
    return *this;
  }

 private:
  friend class ScriptedPeer;
  struct Connection {
    int socket;
    std::function<void(std::string)> record;
    std::string received{};

    bool receive() {
      char buffer[65536];
      ssize_t count = recv(socket, buffer, sizeof buffer, 0);
      if (count > 0) received.append(buffer, static_cast<size_t>(count));
      return count > 0;
    }
    bool receiveRequest() {
      static const std::regex length("\r\ncontent-length: *(\\d+)\r\n", std::regex::icase);
      size_t size;
      while ((size = received.find("\r\n\r\n")) == std::string::npos) {
        if (!receive()) return false;
      }
      std::smatch match;
      std::string head = received.substr(0, size + 4);
      size = head.size() + (std::regex_search(head, match, length) ? std::stoul(match[1]) : 0);
      while (received.size() < size) {
        if (!receive()) return false;
      }
      record(received.substr(0, size));
      received.erase(0, size);
      return true;
    }
  };
  using Step = std::function<bool(Connection&)>;

  Script& add(Step step) {
    steps_.push_back(std::move(step));
    return *this;
  }

  std::vector<Step> steps_;
  std::vector<Gate> gates_;
};

/* Answers each request of a connection with the next bytes, and leaves it open after the last. */
inline Script replies(const std::vector<std::string>& bytes) {
  Script script;
  for (const std::string& response : bytes) script.expectRequest().send(response);
  return script.waitForClose();
}
inline Script reply(const std::string& bytes) {
  return replies({bytes});
}
inline Script replyAndClose(const std::string& bytes) {
  return Script().expectRequest().send(bytes);
}
/* A complete response with these bytes as its body. */
inline std::string okResponse(const std::string& body) {
  return "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: " + std::to_string(body.size()) +
         "\r\n\r\n" + body;
}

/* A socket bound to a free port of the loopback interface, and the port. */
inline std::pair<int, int> bindToLoopback(bool useIPv6 = false) {
  /* The address and the port of the other family have their places in this structure, too. */
  sockaddr_in6 address = {};
  address.sin6_family = useIPv6 ? AF_INET6 : AF_INET;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (useIPv6) address.sin6_addr = in6addr_loopback;
  if (!useIPv6) reinterpret_cast<sockaddr_in*>(generic)->sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  int socket = ::socket(address.sin6_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(socket, generic, size) + getsockname(socket, generic, &size) != 0) {
    throw std::system_error(errno, std::generic_category(), "no address of the loopback interface");
  }
  return {socket, ntohs(address.sin6_port)};
}

/* A port of the loopback interface on which nobody listens. */
inline int closedPort() {
  auto [socket, port] = bindToLoopback();
  close(socket);
  return port;
}

class ScriptedPeer {
 public:
  /* The first connection gets the first script, and so on; those beyond the last get the last. */
  explicit ScriptedPeer(std::vector<Script> scripts, bool useIPv6 = false)
      : scripts_(std::move(scripts)), host_(useIPv6 ? "[::1]:" : "127.0.0.1:") {
    std::tie(listener_, port_) = bindToLoopback(useIPv6);
    listen(listener_, 64);
    acceptor_ = std::thread([this] { acceptConnections(); });
  }
  ~ScriptedPeer() {
    for (Script& script : scripts_) {
      for (Gate& gate : script.gates_) gate.open();
    }
    {
      std::lock_guard lock(mutex_);
      isStopping_ = true;
      for (int socket : sockets_) shutdown(socket, SHUT_RDWR);
    }
    shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    for (std::thread& server : servers_) server.join();
    close(listener_);
  }
  ScriptedPeer(const ScriptedPeer&) = delete;
  ScriptedPeer& operator=(const ScriptedPeer&) = delete;

  int port() const { return port_; }
  std::string url(const std::string& path = "/") const {
    return "http://" + host_ + std::to_string(port_) + path;
  }

  /* The requests as they arrived, and the number of connections that were accepted. */
  std::vector<std::string> requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
  }
  size_t connectionCount() const {
    std::lock_guard lock(mutex_);
    return servers_.size();
  }
  /* Of those, the number whose scripts are not through yet. */
  size_t openConnectionCount() const {
    std::lock_guard lock(mutex_);
    return sockets_.size();
  }

 private:
  void acceptConnections() {
    for (int socket; (socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
      int yes = 1;
      setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
      std::lock_guard lock(mutex_);
      if (isStopping_) shutdown(socket, SHUT_RDWR);
      sockets_.insert(socket);
      servers_.emplace_back([this, socket, index = servers_.size()] { serve(socket, index); });
    }
  }
  void serve(int socket, size_t index) {
    Script::Connection connection{socket, [this](std::string request) {
                                    std::lock_guard lock(mutex_);
                                    requests_.push_back(std::move(request));
                                  }};
    for (const Script::Step& step : scripts_[std::min(index, scripts_.size() - 1)].steps_) {
      if (!step(connection)) break;
    }
    std::lock_guard lock(mutex_);
    sockets_.erase(socket);
    close(socket);
  }

  std::vector<Script> scripts_;
  const std::string host_;
  int listener_;
  int port_;
  mutable std::mutex mutex_;
  bool isStopping_ = false;
  std::vector<std::string> requests_;
  std::set<int> sockets_;
  std::vector<std::thread> servers_;
  std::thread acceptor_;
};

/* Runs the loop until the condition holds; false if it does not within 20 seconds. */
template <class Condition>
bool runUntil(Condition condition, const BQString* mode = kBQRunLoopDefaultMode) {
  BQAbsoluteTime end = BQAbsoluteTimeGetCurrent() + 20;
  while (!condition() && BQAbsoluteTimeGetCurrent() < end) {
    if (BQRunLoopRunInMode(mode, 1, true) == kBQRunLoopRunFinished) break;
  }
  return condition();
}

#endif
