/* The other end of the call benchmarks: an HTTP server that does as little as can be. */
#ifndef BENCH_RESPONDER_H
#define BENCH_RESPONDER_H

#include <string>
#include <string_view>

#include "LoopbackServer.h"

namespace bench {

/* Answers every request with the same body, and keeps its connections. */
class Responder {
 public:
  explicit Responder(std::string_view body);

  std::string url() const { return server_.url("/RPC2"); }

 private:
  support::LoopbackServer server_;
};

/* Where the two ends of a call run, so that neither waits for the other's processor. */
constexpr int kClientProcessor = 0;
constexpr int kServerProcessor = 1;

/* Runs this process, and those that it starts from now on, on one processor. False if there is none. */
bool pinToProcessor(int processor);

}  // namespace bench

#endif
