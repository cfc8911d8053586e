/* The server of a long run: a process that answers with protocol handlers, well or badly. */
#ifndef SOAK_SOAK_SERVER_H
#define SOAK_SOAK_SERVER_H

#include <string>

#include "support/LoopbackServer.h"

namespace soak {

/*
 * What is done is the name of the method that is called: "echo" and "fault", the same with the reply
 * in chunks ("chunked") or the connection closed behind it ("close"), and what breaks the rules: "cut",
 * "reset", "silent", "garbage", "status", "image", "broken". The path says the protocol: /0 is XML-RPC,
 * /1 and /2 are SOAP.
 */
class SoakServer : public support::LoopbackServer {
 public:
  SoakServer();

  std::string url(size_t protocol) const;
};

}  // namespace soak

#endif
