/* Requests whose replies are held back for a while. */
#ifndef VXSERVE_HELD_REQUESTS_H
#define VXSERVE_HELD_REQUESTS_H

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <queue>
#include <thread>
#include <vector>

struct MHD_Connection;

namespace tools::vxserve {

class Request;

/*
 * A held request costs neither a thread nor the polling of its connection, which is suspended; a
 * thread of this queue resumes each when its time has come.
 */
class HeldRequests {
 public:
  HeldRequests();
  ~HeldRequests();
  HeldRequests(const HeldRequests&) = delete;
  HeldRequests& operator=(const HeldRequests&) = delete;

  /* Suspends the connection for that many seconds. Called on its thread, from the access handler. */
  void hold(Request& request, MHD_Connection* connection, double seconds);

  /* Resumes all, and marks them as cut short, and so every one that is held later. */
  void cutShort();

 private:
  using Time = std::chrono::steady_clock::time_point;
  struct Held {
    Time due;
    Request* request;
    MHD_Connection* connection;
    bool operator<(const Held& other) const { return due > other.due; }
  };

  void run();
  void resumeFirst(bool cut);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::priority_queue<Held> held_;
  bool isCut_ = false;
  bool isStopped_ = false;
  std::thread thread_;
};

}  // namespace tools::vxserve

#endif
