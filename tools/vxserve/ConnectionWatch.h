/* Ends connections whose requests take too long to arrive. */
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

  /* From now on the peer has the time of the deadline to send what is due. */
  void expect() { since_ = Clock::now().time_since_epoch().count(); }
  /* Nothing is due. */
  void expectNothing() { since_ = kNever; }

  Clock::time_point expectedSince() const { return Clock::time_point(Clock::duration(since_.load())); }
  bool isExpecting() const { return since_ != kNever; }
  int descriptor() const { return descriptor_; }

 private:
  static constexpr Clock::rep kNever = -1;

  int descriptor_;
  std::atomic<Clock::rep> since_ = Clock::now().time_since_epoch().count();
};

/*
 * A limit on silence would not do: a peer that sends one byte now and then would never reach it. So
 * a thread of the watch looks at all connections now and then, and shuts those down that are late;
 * the server then finds them at their end.
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
