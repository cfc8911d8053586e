/* The address of one end of a connection. */
#ifndef VXSERVE_SOCKET_ADDRESS_H
#define VXSERVE_SOCKET_ADDRESS_H

#include <string>

struct sockaddr;

namespace tools::vxserve {

/* As in URLs: "127.0.0.1:8080" or "[::1]:8080"; "-" if it is neither. */
std::string textOfAddress(const sockaddr* address);

}  // namespace tools::vxserve

#endif
