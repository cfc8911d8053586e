#include "ListenSocket.h"

#include <cerrno>
#include <cstring>
#include <memory>
#include <stdexcept>

#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include "SocketAddress.h"

namespace tools::vxserve {
namespace {

using AddressList = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

AddressList resolve(const std::string& address, uint16_t port) {
  addrinfo hints = {};
  hints.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* list = nullptr;
  int error = getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &list);
  if (error == 0) return {list, freeaddrinfo};
  throw std::runtime_error("cannot listen on " + address + ": " + gai_strerror(error) +
                           "; give --address an address of this machine");
}

std::string describeFailure(const std::string& address, uint16_t port) {
  int error = errno;
  std::string advice;
  if (error == EADDRINUSE) advice = "; give --port another port, or 0 for a free one";
  if (error == EACCES) advice = "; give --port a port from 1024 on";
  if (error == EADDRNOTAVAIL) advice = "; give --address an address of this machine";
  return "cannot listen on " + address + " port " + std::to_string(port) + ": " + std::strerror(error) +
         advice;
}

}  // namespace

ListenSocket::ListenSocket(const std::string& address, uint16_t port) {
  AddressList list = resolve(address, port);
  descriptor_ = socket(list->ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (descriptor_ < 0) throw std::runtime_error(describeFailure(address, port));
  int on = 1;
  /* Lets the server be started again while connections of the one before are still winding down. */
  setsockopt(descriptor_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (bind(descriptor_, list->ai_addr, list->ai_addrlen) == 0 && listen(descriptor_, SOMAXCONN) == 0) return;
  std::string reason = describeFailure(address, port);
  close(descriptor_);
  throw std::runtime_error(reason);
}

ListenSocket::~ListenSocket() {
  close(descriptor_);
}

void ListenSocket::refuse() const {
  /* Closing it is not for now: the server's threads may still look at the descriptor. */
  shutdown(descriptor_, SHUT_RDWR);
}

std::string ListenSocket::url() const {
  sockaddr_storage address = {};
  socklen_t length = sizeof address;
  getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address), &length);
  return "http://" + textOfAddress(reinterpret_cast<sockaddr*>(&address)) + "/";
}

}  // namespace tools::vxserve
