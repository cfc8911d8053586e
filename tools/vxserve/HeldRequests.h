/* Requests whose replies are held back for a while. */
#ifndef VXSERVE_HELD_REQUESTS_H
#define VXSERVE_HELD_REQUESTS_H

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

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

  /* Resumes those whose peers have closed their connections, and marks them as cut short. */
  void dropAbandoned();

  /* Resumes all, and marks them as cut short, and so every one that is held later. */
  void cutShort();

 private:
  using Time = std::chrono::steady_clock::time_point;
  struct Held {
    Request* request;
    MHD_Connection* connection;
  };
  /* By the time at which they are due. */
  using Queue = std::multimap<Time, Held>;

  void run();
  Queue::iterator resume(Queue::iterator held, bool cut);

  std::mutex mutex_;
  std::condition_variable changed_;
  Queue held_;
  bool isCut_ = false;
  bool isStopped_ = false;
  std::thread thread_;
};

}  // namespace tools::vxserve

#endif
