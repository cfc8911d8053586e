#include "HeldRequests.h"

#include <poll.h>

#include <iterator>

#include <microhttpd.h>

#include "Request.h"

namespace tools::vxserve {
namespace {

/* Whether the peer has closed the connection, or its half of it; while it is suspended nobody else looks. */
bool isAbandoned(MHD_Connection* connection) {
  const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
  pollfd state = {info->connect_fd, POLLRDHUP, 0};
  return poll(&state, 1, 0) > 0;
}

}  // namespace

HeldRequests::HeldRequests() : thread_(&HeldRequests::run, this) {}

HeldRequests::~HeldRequests() {
  {
    std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void HeldRequests::hold(Request& request, MHD_Connection* connection, double seconds) {
  auto delay = std::chrono::duration_cast<Time::duration>(std::chrono::duration<double>(seconds));
  MHD_suspend_connection(connection);
  {
    std::lock_guard lock(mutex_);
    held_.emplace(std::chrono::steady_clock::now() + delay, Held{&request, connection});
  }
  changed_.notify_one();
}

void HeldRequests::dropAbandoned() {
  std::lock_guard lock(mutex_);
  for (auto held = held_.begin(); held != held_.end();) {
    held = isAbandoned(held->second.connection) ? resume(held, true) : std::next(held);
  }
}

void HeldRequests::cutShort() {
  {
    std::lock_guard lock(mutex_);
    isCut_ = true;
  }
  changed_.notify_one();
}

HeldRequests::Queue::iterator HeldRequests::resume(Queue::iterator held, bool cut) {
  auto [request, connection] = held->second;
  if (cut) request->cutShort();
  /* From here on the request belongs to the thread of its connection. */
  MHD_resume_connection(connection);
  return held_.erase(held);
}

void HeldRequests::run() {
  std::unique_lock lock(mutex_);
  while (!isStopped_) {
    if (held_.empty()) {
      changed_.wait(lock);
      continue;
    }
    /* A copy: the wait gives up the lock, and keeps looking at the time that it was given. */
    const Time due = held_.begin()->first;
    bool isDue = due <= std::chrono::steady_clock::now();
    if (isDue || isCut_) {
      resume(held_.begin(), !isDue);
    } else {
      changed_.wait_until(lock, due);
    }
  }
}

}  // namespace tools::vxserve
