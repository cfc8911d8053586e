#include "HeldRequests.h"

#include <poll.h>

#include <algorithm>
#include <iterator>

#include <microhttpd.h>

#include "Request.h"

namespace tools::vxserve {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::string_view kTooMany = "The server holds back as many replies as it can.\n";
constexpr std::string_view kAbandoned = "The client has closed its half of the connection.\n";
constexpr std::string_view kStopping = "The server is stopping.\n";

/* How often connections are checked, and for how long a client may wait that sends nothing more. */
constexpr std::chrono::milliseconds kCheckInterval(250);
constexpr std::chrono::milliseconds kGrace(500);

/* Whether the peer has closed the connection, or its half of it; the HTTP library ignores suspended ones. */
bool isAbandoned(MHD_Connection* connection) {
  const auto* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD);
  pollfd state = {info->connect_fd, POLLRDHUP, 0};
  return poll(&state, 1, 0) > 0;
}

}  // namespace

HeldRequests::HeldRequests(size_t most) : most_(most), thread_(&HeldRequests::run, this) {}

HeldRequests::~HeldRequests() {
  {
    std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

bool HeldRequests::hold(Request& request, MHD_Connection* connection, double seconds) {
  auto delay = std::chrono::duration_cast<Time::duration>(std::chrono::duration<double>(seconds));
  {
    std::lock_guard lock(mutex_);
    if (held_.size() >= most_) {
      request.cutShort(kTooMany);
      return false;
    }
    MHD_suspend_connection(connection);
    held_.emplace(Clock::now() + delay, Held{&request, connection, Clock::now()});
  }
  changed_.notify_one();
  return true;
}

void HeldRequests::cutShort() {
  {
    std::lock_guard lock(mutex_);
    isCut_ = true;
  }
  changed_.notify_one();
}

HeldRequests::Queue::iterator HeldRequests::resume(Queue::iterator held, std::string_view interruption) {
  auto [request, connection, since] = held->second;
  if (!interruption.empty()) request->cutShort(interruption);
  /* From here on the request belongs to the thread of its connection. */
  MHD_resume_connection(connection);
  return held_.erase(held);
}

void HeldRequests::dropAbandoned() {
  Time latest = Clock::now() - kGrace;
  for (auto held = held_.begin(); held != held_.end();) {
    bool isDropped = held->second.since <= latest && isAbandoned(held->second.connection);
    held = isDropped ? resume(held, kAbandoned) : std::next(held);
  }
}

void HeldRequests::run() {
  Time nextCheck = Clock::now();
  std::unique_lock lock(mutex_);
  while (!isStopped_) {
    Time now = Clock::now();
    if (now >= nextCheck) {
      dropAbandoned();
      nextCheck = now + kCheckInterval;
    }
    while (!held_.empty() && (isCut_ || held_.begin()->first <= now)) {
      resume(held_.begin(), held_.begin()->first <= now ? "" : kStopping);
    }
    if (held_.empty()) {
      changed_.wait(lock);
    } else {
      changed_.wait_until(lock, std::min(held_.begin()->first, nextCheck));
    }
  }
}

}  // namespace tools::vxserve
