/* The other end of the call benchmarks: an HTTP server that does as little as can be. */
#ifndef BENCH_RESPONDER_H
#define BENCH_RESPONDER_H

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace bench {

/*
 * A server in a process of its own, on a free port of the loopback, that answers every request with
 * the same body and keeps its connections. It ends with this object, and with this process.
 */
class Responder {
 public:
  explicit Responder(std::string_view body);
  ~Responder();
  Responder(const Responder&) = delete;
  Responder& operator=(const Responder&) = delete;

  std::string url() const;

 private:
  pid_t process_ = -1;
  /* The server ends when the writing side is closed, which is why nobody writes to it. */
  int lifeline_ = -1;
  uint16_t port_ = 0;
};

/* Where the two ends of a call run, so that neither waits for the other's processor. */
constexpr int kClientProcessor = 0;
constexpr int kServerProcessor = 1;

/* Runs this process, and those that it starts from now on, on one processor. False if there is none. */
bool pinToProcessor(int processor);

}  // namespace bench

#endif
