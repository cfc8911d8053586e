#include "platform/http/SocketTable.h"

#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include <curl/curl.h>

#include "platform/http/Transfer.h"

namespace bq {
namespace {

constexpr size_t kMostReady = 64;

/* The number of segments with data that a TCP socket has received; a closing one has none. */
uint32_t receivedSegments(int socket) {
  tcp_info info{};
  socklen_t size = sizeof info;
  if (getsockopt(socket, IPPROTO_TCP, TCP_INFO, &info, &size) != 0) return 0;
  return info.tcpi_data_segs_in;
}

int pendingErrorOf(int socket) {
  int error = 0;
  socklen_t size = sizeof error;
  return getsockopt(socket, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : 0;
}

using GetName = int (*)(int, sockaddr*, socklen_t*);

/* The port of one end of a connection; 0 if it has none. */
int portOf(int socket, GetName getName) {
  sockaddr_storage address{};
  socklen_t size = sizeof address;
  if (getName(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) return 0;
  if (address.ss_family == AF_INET6) return ntohs(reinterpret_cast<sockaddr_in6&>(address).sin6_port);
  return address.ss_family == AF_INET ? ntohs(reinterpret_cast<sockaddr_in&>(address).sin_port) : 0;
}

int eventsForTransfer(uint32_t events) {
  int result = 0;
  /* Reading tells what the error is. */
  if ((events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0) result |= CURL_CSELECT_IN;
  if ((events & EPOLLOUT) != 0) result |= CURL_CSELECT_OUT;
  return result;
}

}  // namespace

SocketTable::SocketTable() : epoll_(epoll_create1(EPOLL_CLOEXEC)) {}

SocketTable::~SocketTable() {
  if (epoll_ >= 0) ::close(epoll_);
}

SocketTable::Entry& SocketTable::entryOf(int socket) {
  auto index = static_cast<size_t>(socket);
  if (index >= entries_.size()) entries_.resize(std::max(index + 1, entries_.size() * 2));
  return entries_[index];
}

void SocketTable::addConnection(int socket) {
  entryOf(socket) = {};
  entryOf(socket).isConnection = true;
  connections_.push_back(socket);
}

void SocketTable::apply(int socket, Entry& entry, uint32_t events) {
  if (entry.registered == events) return;
  epoll_event event{};
  event.events = events;
  event.data.fd = socket;
  int operation = EPOLL_CTL_MOD;
  if (entry.registered == 0) operation = EPOLL_CTL_ADD;
  if (events == 0) operation = EPOLL_CTL_DEL;
  epoll_ctl(epoll_, operation, socket, &event);
  registered_ += (events != 0) - (entry.registered != 0);
  entry.registered = events;
  lastRegistered_ = socket;
}

void SocketTable::watch(int socket, uint32_t events) {
  Entry& entry = entryOf(socket);
  entry.wanted = events;
  /* Any socket but a connection may be closed, and its number used again, without a word. */
  bool isToStay = events == 0 && entry.isConnection;
  if (!isToStay) apply(socket, entry, events);
}

bool SocketTable::hasPorts(int socket, int localPort, int remotePort) {
  Entry& entry = entryOf(socket);
  if (entry.localPort == 0) {
    entry.localPort = portOf(socket, getsockname);
    entry.remotePort = portOf(socket, getpeername);
  }
  return entry.localPort == localPort && entry.remotePort == remotePort;
}

int SocketTable::claim(int localPort, int remotePort, Transfer* owner) {
  for (int socket : connections_) {
    if (!hasPorts(socket, localPort, remotePort)) continue;
    entryOf(socket).owner = owner;
    return socket;
  }
  return -1;
}

void SocketTable::disclaim(int socket, const Transfer* owner) {
  if (socket < 0 || entryOf(socket).owner != owner) return;
  Entry& entry = entryOf(socket);
  entry.owner = nullptr;
  if (!owner->isEncrypted()) entry.segments = receivedSegments(socket);
}

int SocketTable::close(int socket) {
  Entry& entry = entryOf(socket);
  if (Transfer* owner = entry.owner; owner != nullptr) {
    /* What TLS sends of its own cannot be told from a reply. */
    bool hadData = !owner->isEncrypted() && receivedSegments(socket) != entry.segments;
    owner->connectionClosed(hadData, pendingErrorOf(socket));
  }
  apply(socket, entry, 0);
  entry = {};
  std::erase(connections_, socket);
  return ::close(socket);
}

void SocketTable::abandon() {
  for (int socket : connections_) ::close(socket);
  connections_.clear();
  entries_.clear();
  ::close(std::exchange(epoll_, -1));
}

size_t SocketTable::collectReady(Ready* ready, size_t capacity) {
  /* If there is but one socket, and it waits to be read, it is what made the descriptor readable. */
  if (registered_ == 1 && entryOf(lastRegistered_).registered == EPOLLIN &&
      entryOf(lastRegistered_).wanted == EPOLLIN) {
    ready[0] = {lastRegistered_, CURL_CSELECT_IN};
    return 1;
  }
  epoll_event events[kMostReady];
  int count = epoll_wait(epoll_, events, static_cast<int>(std::min(capacity, kMostReady)), 0);
  size_t used = 0;
  for (int i = 0; i < count; ++i) {
    int socket = events[i].data.fd;
    Entry& entry = entryOf(socket);
    if (entry.wanted == 0) {
      /* An idle connection that the peer closed, or that of a transfer that takes nothing now. */
      apply(socket, entry, 0);
    } else {
      ready[used++] = {socket, eventsForTransfer(events[i].events)};
    }
  }
  return used;
}

}  // namespace bq
