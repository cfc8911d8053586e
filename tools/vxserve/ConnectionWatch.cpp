#include "ConnectionWatch.h"

#include <algorithm>
#include <memory>

#include <sys/socket.h>

namespace tools::vxserve {

ConnectionWatch::ConnectionWatch(std::chrono::seconds deadline)
    : deadline_(deadline), thread_(&ConnectionWatch::run, this) {}

ConnectionWatch::~ConnectionWatch() {
  {
    std::lock_guard lock(mutex_);
    isStopped_ = true;
  }
  stopped_.notify_one();
  thread_.join();
  for (Connection* connection : connections_) delete connection;
}

Connection* ConnectionWatch::add(int descriptor) {
  auto connection = std::make_unique<Connection>(descriptor);
  std::lock_guard lock(mutex_);
  connections_.insert(connection.get());
  return connection.release();
}

void ConnectionWatch::remove(Connection* connection) {
  {
    std::lock_guard lock(mutex_);
    connections_.erase(connection);
  }
  delete connection;
}

void ConnectionWatch::run() {
  using std::chrono::milliseconds;
  /* How late the end may come: a tenth of the deadline, and no more than a second. */
  milliseconds pause = std::min(milliseconds(deadline_) / 10, milliseconds(1000));
  std::unique_lock lock(mutex_);
  while (!stopped_.wait_for(lock, pause, [this] { return isStopped_; })) endLateConnections();
}

void ConnectionWatch::endLateConnections() {
  Clock::time_point latest = Clock::now() - deadline_;
  for (Connection* connection : connections_) {
    if (!connection->isExpecting() || connection->expectedSince() > latest) continue;
    connection->expectNothing();
    /* Otherwise the system would keep the rest of the reply, megabytes perhaps, for as long as the peer
     * reads. */
    linger none = {1, 0};
    if (connection->isReplying()) {
      setsockopt(connection->descriptor(), SOL_SOCKET, SO_LINGER, &none, sizeof none);
    }
    shutdown(connection->descriptor(), SHUT_RDWR);
  }
}

}  // namespace tools::vxserve
