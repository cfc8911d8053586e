/* A mutex that costs nothing while the process has but one thread. */
#ifndef BQ_RUNLOOP_MUTEX_H
#define BQ_RUNLOOP_MUTEX_H

#include <mutex>

#include <sys/single_threaded.h>

namespace bq {

/* No thread is started or joined while it is held, so that the number of threads stays what it was. */
class Mutex {
 public:
  void lock() {
    if (!__libc_single_threaded) mutex_.lock();
  }
  void unlock() {
    if (!__libc_single_threaded) mutex_.unlock();
  }

 private:
  std::mutex mutex_;
};

}  // namespace bq

#endif
