/*
 * The sockets of a thread's transfers, watched by one epoll instance. What is watched is changed
 * only when it must be: a connection that waits for its next request stays as it was.
 */
#ifndef BQ_HTTP_SOCKET_TABLE_H
#define BQ_HTTP_SOCKET_TABLE_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bq {

class Transfer;

class SocketTable {
 public:
  struct Ready {
    int socket;
    /* CURL_CSELECT_ bits. */
    int events;
  };

  SocketTable();
  ~SocketTable();
  SocketTable(const SocketTable&) = delete;
  SocketTable& operator=(const SocketTable&) = delete;

  /* The epoll instance, readable while a socket is ready; -1 if the system has none to give. */
  int descriptor() const { return epoll_; }

  /* A socket that was opened for a connection, and is closed through close(). */
  void addConnection(int socket);

  /* Watches a socket for EPOLLIN and EPOLLOUT on behalf of a transfer. */
  void watch(int socket, uint32_t events, Transfer* owner);

  /* Ends the watch. A connection keeps its owner, which learns of its end, until disown(). */
  void unwatch(int socket);

  /* The transfer is done with its connection. */
  void disown(int socket, const Transfer* owner);

  /* Closes the socket of a connection and tells its owner. Returns what close() does. */
  int close(int socket);

  /* Writes the sockets that are ready, without waiting, and returns how many. */
  size_t collectReady(Ready* ready, size_t capacity);

 private:
  struct Entry {
    Transfer* owner = nullptr;
    uint32_t wanted = 0;
    uint32_t registered = 0;
    /* Segments with data that had been received when the connection's last owner was done. */
    uint32_t segments = 0;
    bool isConnection = false;
  };

  Entry& entryOf(int socket);
  void apply(int socket, Entry& entry, uint32_t events);

  int epoll_;
  std::vector<Entry> entries_;
};

}  // namespace bq

#endif
