/*
 * TLS writes to sockets without MSG_NOSIGNAL, so that a peer that closed its end would end the
 * process. While the guard lives, the signal is held back from this thread and then dropped.
 */
#ifndef BQ_HTTP_SIGPIPE_GUARD_H
#define BQ_HTTP_SIGPIPE_GUARD_H

#include <csignal>
#include <ctime>

namespace bq {

class SigpipeGuard {
 public:
  explicit SigpipeGuard(bool isNeeded) : isNeeded_(isNeeded) {
    if (!isNeeded_) return;
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGPIPE);
    wasPending_ = isPending();
    pthread_sigmask(SIG_BLOCK, &blocked, &former_);
  }

  ~SigpipeGuard() {
    if (!isNeeded_) return;
    if (!wasPending_ && isPending()) {
      sigset_t pipe;
      sigemptyset(&pipe);
      sigaddset(&pipe, SIGPIPE);
      timespec now{};
      sigtimedwait(&pipe, nullptr, &now);
    }
    pthread_sigmask(SIG_SETMASK, &former_, nullptr);
  }

  SigpipeGuard(const SigpipeGuard&) = delete;
  SigpipeGuard& operator=(const SigpipeGuard&) = delete;

 private:
  static bool isPending() {
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, SIGPIPE) == 1;
  }

  bool isNeeded_;
  bool wasPending_ = false;
  sigset_t former_;
};

}  // namespace bq

#endif
