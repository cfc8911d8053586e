#include "Responder.h"

#include <sched.h>

namespace bench {
namespace {

support::LoopbackServer::Answerer makeAnswerer(std::string_view body) {
  pinToProcessor(kServerProcessor);
  std::string response =
      "HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\nContent-Length: " + std::to_string(body.size()) +
      "\r\n\r\n" + std::string(body);
  return [response](std::string_view) { return support::LoopbackServer::Answer{response}; };
}

}  // namespace

Responder::Responder(std::string_view body) : server_([body] { return makeAnswerer(body); }) {
  pinToProcessor(kClientProcessor);
}

bool pinToProcessor(int processor) {
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(processor, &set);
  return sched_setaffinity(0, sizeof set, &set) == 0;
}

}  // namespace bench
