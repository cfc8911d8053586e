#include "HeldRequests.h"

#include <microhttpd.h>

#include "Request.h"

namespace tools::vxserve {

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
    held_.push({std::chrono::steady_clock::now() + delay, &request, connection});
  }
  changed_.notify_one();
}

void HeldRequests::cutShort() {
  {
    std::lock_guard lock(mutex_);
    isCut_ = true;
  }
  changed_.notify_one();
}

void HeldRequests::resumeFirst(bool cut) {
  Held first = held_.top();
  held_.pop();
  if (cut) first.request->cutShort();
  /* From here on the request belongs to the thread of its connection. */
  MHD_resume_connection(first.connection);
}

void HeldRequests::run() {
  std::unique_lock lock(mutex_);
  while (!isStopped_) {
    if (held_.empty()) {
      changed_.wait(lock);
      continue;
    }
    /* A copy: the wait gives up the lock, and keeps looking at the time that it was given. */
    const Time due = held_.top().due;
    bool isDue = due <= std::chrono::steady_clock::now();
    if (isDue || isCut_) {
      resumeFirst(!isDue);
    } else {
      changed_.wait_until(lock, due);
    }
  }
}

}  // namespace tools::vxserve
