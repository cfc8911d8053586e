/* Ends connections whose peers take too long to send a request or to take its reply. */
#ifndef VXSERVE_CONNECTION_WATCH_H
#define VXSERVE_CONNECTION_WATCH_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <unordered_set>

namespace tools::vxserve {

using Clock = std::chrono::steady_clock;

/* An open connection. Its own thread keeps the time, the watch looks at it. */
class Connection {
 public:
  explicit Connection(int descriptor) : descriptor_(descriptor) {}

  /* From now on the peer has the time of the deadline to send a request, or to take the reply. */
  void expectRequest() { expect(false); }
  void expectReader() { expect(true); }
  /* It is the server's turn. */
  void expectNothing() { since_ = kNever; }

  Clock::time_point expectedSince() const { return Clock::time_point(Clock::duration(since_.load())); }
  bool isExpecting() const { return since_ != kNever; }
  bool isReplying() const { return isReplying_; }
  int descriptor() const { return descriptor_; }

 private:
  static constexpr Clock::rep kNever = -1;

  void expect(bool isReplying) {
    isReplying_ = isReplying;
    since_ = Clock::now().time_since_epoch().count();
  }

  int descriptor_;
  std::atomic<bool> isReplying_ = false;
  std::atomic<Clock::rep> since_ = Clock::now().time_since_epoch().count();
};

/*
 * The HTTP library can limit only silence, which a peer avoids that moves one byte now and then. A thread of
 * the watch regularly checks all connections and shuts down those that are late; the server then finds them
 * at their end.
 */
class ConnectionWatch {
 public:
  explicit ConnectionWatch(std::chrono::seconds deadline);
  ~ConnectionWatch();
  ConnectionWatch(const ConnectionWatch&) = delete;
  ConnectionWatch& operator=(const ConnectionWatch&) = delete;

  /* The record of a new connection, which stays valid until it is removed. */
  Connection* add(int descriptor);
  /* Called before the descriptor is closed. */
  void remove(Connection* connection);

 private:
  void run();
  void endLateConnections();

  const std::chrono::seconds deadline_;
  std::mutex mutex_;
  std::condition_variable stopped_;
  bool isStopped_ = false;
  std::unordered_set<Connection*> connections_;
  std::thread thread_;
};

}  // namespace tools::vxserve

#endif
