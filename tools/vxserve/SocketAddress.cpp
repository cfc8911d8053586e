#include "SocketAddress.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace tools::vxserve {

std::string textOfAddress(const sockaddr* address) {
  char host[INET6_ADDRSTRLEN] = "";
  if (address != nullptr && address->sa_family == AF_INET) {
    const auto* four = reinterpret_cast<const sockaddr_in*>(address);
    inet_ntop(AF_INET, &four->sin_addr, host, sizeof host);
    return std::string(host) + ":" + std::to_string(ntohs(four->sin_port));
  }
  if (address != nullptr && address->sa_family == AF_INET6) {
    const auto* six = reinterpret_cast<const sockaddr_in6*>(address);
    inet_ntop(AF_INET6, &six->sin6_addr, host, sizeof host);
    return "[" + std::string(host) + "]:" + std::to_string(ntohs(six->sin6_port));
  }
  return "-";
}

}  // namespace tools::vxserve
