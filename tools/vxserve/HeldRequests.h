/* Requests whose replies are held back for a while. */
#ifndef VXSERVE_HELD_REQUESTS_H
#define VXSERVE_HELD_REQUESTS_H

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string_view>
#include <thread>

struct MHD_Connection;

namespace tools::vxserve {

class Request;

/*
 * A held request occupies no thread of the server: its connection is suspended. A thread of this queue
 * resumes each when its time has come, or within a second after its peer has closed the connection, or its
 * half of it: the system does not tell the two apart.
 */
class HeldRequests {
 public:
  /* `most` is how many may be held at a time, since each keeps a connection open that others want. */
  explicit HeldRequests(size_t most);
  ~HeldRequests();
  HeldRequests(const HeldRequests&) = delete;
  HeldRequests& operator=(const HeldRequests&) = delete;

  /*
   * Suspends the connection for that many seconds. Called on its thread, from the access handler. False if
   * too many are held already; the request is then marked as cut short.
   */
  bool hold(Request& request, MHD_Connection* connection, double seconds);

  /* Resumes all, and marks them as cut short, and so every one that is held later. */
  void cutShort();

 private:
  using Time = std::chrono::steady_clock::time_point;
  struct Held {
    Request* request;
    MHD_Connection* connection;
    Time since;
  };
  /* By the time at which they are due. */
  using Queue = std::multimap<Time, Held>;

  void run();
  void dropAbandoned();
  Queue::iterator resume(Queue::iterator held, std::string_view interruption);

  const size_t most_;
  std::mutex mutex_;
  std::condition_variable changed_;
  Queue held_;
  bool isCut_ = false;
  bool isStopped_ = false;
  std::thread thread_;
};

}  // namespace tools::vxserve

#endif
