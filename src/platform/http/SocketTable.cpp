#include "platform/http/SocketTable.h"

#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

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

int eventsForTransfer(uint32_t events) {
  int result = 0;
  if ((events & (EPOLLIN | EPOLLHUP)) != 0) result |= CURL_CSELECT_IN;
  if ((events & EPOLLOUT) != 0) result |= CURL_CSELECT_OUT;
  if ((events & EPOLLERR) != 0) result |= CURL_CSELECT_ERR;
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
  entry.registered = events;
}

void SocketTable::watch(int socket, uint32_t events, Transfer* owner) {
  Entry& entry = entryOf(socket);
  entry.owner = owner;
  entry.wanted = events;
  if (entry.isConnection) owner->usesSocket(socket);
  apply(socket, entry, events);
}

void SocketTable::unwatch(int socket) {
  Entry& entry = entryOf(socket);
  entry.wanted = 0;
  if (entry.isConnection) return;
  /* Any other socket may be closed, and its number used again, without a word. */
  apply(socket, entry, 0);
  entry = {};
}

void SocketTable::disown(int socket, const Transfer* owner) {
  if (socket < 0 || entryOf(socket).owner != owner) return;
  Entry& entry = entryOf(socket);
  entry.owner = nullptr;
  if (!owner->isEncrypted()) entry.segments = receivedSegments(socket);
}

int SocketTable::close(int socket) {
  Entry& entry = entryOf(socket);
  Transfer* owner = entry.owner;
  if (owner != nullptr && !owner->isEncrypted()) {
    owner->connectionClosed(receivedSegments(socket) != entry.segments);
  }
  apply(socket, entry, 0);
  entry = {};
  return ::close(socket);
}

size_t SocketTable::collectReady(Ready* ready, size_t capacity) {
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
