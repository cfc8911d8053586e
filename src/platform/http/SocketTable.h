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

  /* Watches a socket for EPOLLIN and EPOLLOUT, or for nothing. */
  void watch(int socket, uint32_t events);

  /*
   * A transfer sends its request on the connection with these ports, and learns of its end until
   * it is done with it. Returns the socket; -1 if there is no such connection.
   */
  int claim(int localPort, int remotePort, Transfer* owner);
  void disclaim(int socket, const Transfer* owner);

  /* The transfer that claimed a socket; null if none has. */
  Transfer* ownerOf(int socket) { return entryOf(socket).owner; }

  /* Closes everything, silently: another process goes on with the connections. */
  void abandon();

  /* Closes the socket of a connection and tells its owner. Returns what close() does. */
  int close(int socket);

  /*
   * Writes the sockets that are ready, without waiting, and returns how many. For a thread whose
   * descriptor was reported readable: a socket that is alone is taken to be the reason.
   */
  size_t collectReady(Ready* ready, size_t capacity);

 private:
  struct Entry {
    uint32_t wanted = 0;
    uint32_t registered = 0;
    bool isConnection = false;
    /* The rest is of connections only. The ports are 0 until they are asked for. */
    int localPort = 0;
    int remotePort = 0;
    Transfer* owner = nullptr;
    /* Segments with data that had been received when the last owner was done. */
    uint32_t segments = 0;
  };

  Entry& entryOf(int socket);
  bool hasPorts(int socket, int localPort, int remotePort);
  void apply(int socket, Entry& entry, uint32_t events);

  int epoll_;
  /* How many sockets the instance watches, and the one that was changed last. */
  int registered_ = 0;
  int lastRegistered_ = -1;
  /* By their numbers. */
  std::vector<Entry> entries_;
  std::vector<int> connections_;
};

}  // namespace bq

#endif
