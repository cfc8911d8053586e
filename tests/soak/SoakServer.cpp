#include "soak/SoakServer.h"

#include <VX/VX.h>
#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "support/Values.h"

namespace soak {
namespace {

using support::Value;

[[noreturn]] void fail(const char* what) {
  std::perror(what);
  std::exit(1);
}

/* The reply to a posted document, and the method that it calls. */
struct Answer {
  std::string method = "garbage";
  std::string body;
  bool isFault = false;
};

class Responder {
 public:
  Responder() {
    for (const BQString* protocol : {kVXXMLRPCProtocol, kVXSOAP1999Protocol, kVXSOAP2001Protocol}) {
      handlers_.push_back(Value::adopt(VXProtocolHandlerCreate(nullptr, protocol)));
    }
  }

  Answer answer(size_t protocol, std::string_view document) const {
    auto* handler = handlers_.at(protocol).as<OpaqueVXProtocolHandlerRef>();
    Value request = Value::adopt(VXProtocolHandlerCopyRequestDictionary(handler, support::blob(document)));
    if (request.get() == nullptr) return {};
    Answer result;
    result.method = support::text(BQDictionaryGetValue(request, BQSTR("/VXMethodName")));
    result.isFault = result.method == "fault";
    Value reply;
    if (result.isFault) {
      Value fault =
          support::dictionary({{"/FaultCode", support::integer(7)}, {"/FaultString", support::string("no")}});
      reply = Value::adopt(VXProtocolHandlerCopyFaultDocument(handler, request, fault));
    } else {
      reply = Value::adopt(VXProtocolHandlerCopyReplyDocument(handler, request, firstParameter(request)));
    }
    result.body = support::bytes(reply);
    return result;
  }

 private:
  static BQTypeRef firstParameter(const BQDictionary* request) {
    auto* parameters =
        static_cast<const BQDictionary*>(BQDictionaryGetValue(request, BQSTR("/VXMethodParameters")));
    if (BQDictionaryGetCount(parameters) != 1) return nullptr;
    BQTypeRef key, value;
    BQDictionaryGetKeysAndValues(parameters, &key, &value);
    return value;
  }

  std::vector<Value> handlers_;
};

std::string head(const char* status, const char* type, size_t length) {
  return std::string("HTTP/1.1 ") + status + "\r\nContent-Type: " + type +
         "\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n";
}

std::string chunked(const std::string& body) {
  std::string result = "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nTransfer-Encoding: chunked\r\n\r\n";
  for (size_t start = 0; start < body.size(); start += 100) {
    std::string chunk = body.substr(start, 100);
    char size[16];
    std::snprintf(size, sizeof size, "%zx\r\n", chunk.size());
    result += size + chunk + "\r\n";
  }
  return result + "0\r\n\r\n";
}

struct Connection {
  int socket;
  std::string received;
};

class Server {
 public:
  Server(int listener, int lifeline) : listener_(listener), lifeline_(lifeline) {}

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
    int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) return;
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    connections_.push_back({socket, {}});
  }

  /* False if the connection is to be closed. */
  bool serve(Connection& connection) {
    char bytes[16384];
    ssize_t count = recv(connection.socket, bytes, sizeof bytes, 0);
    if (count <= 0) return false;
    connection.received.append(bytes, static_cast<size_t>(count));
    size_t headEnd = connection.received.find("\r\n\r\n");
    size_t field = connection.received.find("\r\nContent-Length: ");
    if (headEnd == std::string::npos || field >= headEnd) return headEnd == std::string::npos;
    size_t start = headEnd + 4, length = std::strtoul(connection.received.c_str() + field + 18, nullptr, 10);
    if (connection.received.size() < start + length) return true;
    size_t protocol = static_cast<size_t>(connection.received.at(6) - '0');
    Answer answer = responder_.answer(protocol, std::string_view(connection.received).substr(start, length));
    connection.received.erase(0, start + length);
    return respond(connection.socket, answer, protocol);
  }

  static bool respond(int socket, const Answer& answer, size_t protocol) {
    const std::string& body = answer.body;
    const char* status = answer.isFault && protocol != 0 ? "500 Fault" : "200 OK";
    std::string whole = head(status, "text/xml", body.size()) + body;
    if (answer.method == "silent") return false;
    if (answer.method == "garbage") whole = "nonsense\r\n\r\n";
    if (answer.method == "cut" || answer.method == "reset") whole.resize(whole.size() / 2);
    if (answer.method == "chunked") whole = chunked(body);
    if (answer.method == "status") whole = head("503 Busy", "text/xml", body.size()) + body;
    if (answer.method == "image") whole = head("200 OK", "image/png", body.size()) + body;
    if (answer.method == "broken")
      whole = head("200 OK", "text/xml", body.size() / 2) + body.substr(0, body.size() / 2);
    size_t sent = 0;
    while (sent < whole.size()) {
      ssize_t count = send(socket, whole.data() + sent, whole.size() - sent, MSG_NOSIGNAL);
      if (count <= 0) return false;
      sent += static_cast<size_t>(count);
    }
    if (answer.method == "reset") {
      linger hard{1, 0};
      setsockopt(socket, SOL_SOCKET, SO_LINGER, &hard, sizeof hard);
    }
    return answer.method != "cut" && answer.method != "reset" && answer.method != "close" &&
           answer.method != "garbage";
  }

  int listener_;
  int lifeline_;
  Responder responder_;
  std::vector<Connection> connections_;
};

int listenOnLoopback(uint16_t& port) {
  int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* generic = reinterpret_cast<sockaddr*>(&address);
  if (listener < 0 || bind(listener, generic, size) != 0 || listen(listener, 64) != 0 ||
      getsockname(listener, generic, &size) != 0) {
    fail("soak: no socket to listen on");
  }
  port = ntohs(address.sin_port);
  return listener;
}

}  // namespace

SoakServer::SoakServer() {
  int listener = listenOnLoopback(port_);
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) fail("soak: no pipe");
  process_ = fork();
  if (process_ < 0) fail("soak: no process");
  if (process_ == 0) {
    close(ends[1]);
    Server(listener, ends[0]).run();
    std::exit(0);
  }
  close(listener);
  close(ends[0]);
  lifeline_ = ends[1];
}

SoakServer::~SoakServer() {
  close(lifeline_);
  waitpid(process_, nullptr, 0);
}

std::string SoakServer::url(size_t protocol) const {
  return "http://127.0.0.1:" + std::to_string(port_) + "/" + std::to_string(protocol);
}

}  // namespace soak
