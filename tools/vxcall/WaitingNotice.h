/* Tells someone at a terminal that a call takes its time. */
#ifndef VXCALL_WAITING_NOTICE_H
#define VXCALL_WAITING_NOTICE_H

#include <condition_variable>
#include <mutex>
#include <thread>

namespace tools::vxcall {

/*
 * From its second second on it shows on standard error, if that is a terminal, for how long it has
 * been there, and takes that line away in the end. A thread of its own does so, since the library
 * does not come back from a synchronous call in between.
 */
class WaitingNotice {
 public:
  WaitingNotice();
  ~WaitingNotice();
  WaitingNotice(const WaitingNotice&) = delete;
  WaitingNotice& operator=(const WaitingNotice&) = delete;

 private:
  void run();

  std::mutex mutex_;
  std::condition_variable over_;
  bool isOver_ = false;
  std::thread thread_;
};

}  // namespace tools::vxcall

#endif
