/* The socket on which connections arrive. */
#ifndef VXSERVE_LISTEN_SOCKET_H
#define VXSERVE_LISTEN_SOCKET_H

#include <cstdint>
#include <string>

namespace tools::vxserve {

class ListenSocket {
 public:
  /* Listens on an address, or a name of this host. Throws std::runtime_error with what went wrong. */
  ListenSocket(const std::string& address, uint16_t port);
  ~ListenSocket();
  ListenSocket(const ListenSocket&) = delete;
  ListenSocket& operator=(const ListenSocket&) = delete;

  int descriptor() const { return descriptor_; }
  /* Has connections refused from then on; those that wait are lost. */
  void refuse() const;
  /* The root of the server, as in "http://127.0.0.1:8080/". */
  std::string url() const;

 private:
  int descriptor_ = -1;
};

}  // namespace tools::vxserve

#endif
