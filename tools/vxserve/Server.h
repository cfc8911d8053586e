/* The HTTP server. */
#ifndef VXSERVE_SERVER_H
#define VXSERVE_SERVER_H

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

#include "ConnectionWatch.h"
#include "HeldRequests.h"
#include "ListenSocket.h"
#include "Options.h"

struct MHD_Connection;
struct MHD_Daemon;

namespace tools::vxserve {

class Request;

/*
 * A pool of threads polls the connections and answers the requests as they are complete. What takes
 * no time on a thread but on the clock is held back outside of it.
 */
class Server {
 public:
  /* Serves from then on. Throws std::runtime_error if it cannot. */
  Server(const Options& options, const ListenSocket& socket);
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  /* Ends what is still there. */
  ~Server();

  /* Accepts no more connections, and closes each behind the request that it is on. */
  void beginStop();
  bool isIdle() const { return requests_ == 0; }
  /* Answers what is held back at once. */
  void cutShort() { held_.cutShort(); }

 private:
  friend struct Callbacks;

  struct DaemonStop {
    void operator()(MHD_Daemon* daemon) const;
  };
  using Daemon = std::unique_ptr<MHD_Daemon, DaemonStop>;

  Daemon startDaemon(const Options& options, const ListenSocket& socket);
  Request* beginRequest(MHD_Connection* connection, const char* method, const char* path);
  void endRequest(MHD_Connection* connection, Request* request, bool wasSent);
  bool finish(Request& request, MHD_Connection* connection);
  bool send(Request& request, MHD_Connection* connection);

  size_t maximumBody_;
  bool logs_;
  unsigned connectionLimit_;
  std::atomic<bool> isStopping_ = false;
  std::atomic<long> requests_ = 0;
  ConnectionWatch watch_;
  HeldRequests held_;
  /* The last member: its threads use all the others. */
  Daemon daemon_;
};

}  // namespace tools::vxserve

#endif
