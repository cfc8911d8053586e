#include "WaitingNotice.h"

#include <signal.h>
#include <unistd.h>

#include <cstdio>

#include <atomic>
#include <chrono>
#include <string_view>

namespace tools::vxcall {
namespace {

/* Blanks do on every terminal what a control sequence does on most. */
constexpr std::string_view kErase = "\r                                                  \r";

std::atomic<bool> isShown = false;

/* The descriptor itself: the stream may be muted at the time. */
void put(std::string_view text) {
  [[maybe_unused]] ssize_t written = write(STDERR_FILENO, text.data(), text.size());
}

void erase() {
  if (isShown.exchange(false)) put(kErase);
}

void show(long seconds) {
  char line[kErase.size()];
  int length = std::snprintf(line, sizeof line, "\rvxcall: waiting for the reply, %ld s", seconds);
  isShown = true;
  put({line, static_cast<size_t>(length)});
}

/* The default action, which this handler has given way to, then ends the process. */
void eraseAndEnd(int signal) {
  erase();
  raise(signal);
}

void eraseOnSignal(int signal) {
  struct sigaction action = {};
  sigaction(signal, nullptr, &action);
  if (action.sa_handler != SIG_DFL) return;
  action.sa_handler = eraseAndEnd;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigaction(signal, &action, nullptr);
}

}  // namespace

WaitingNotice::WaitingNotice() {
  if (isatty(STDERR_FILENO) == 0) return;
  eraseOnSignal(SIGINT);
  eraseOnSignal(SIGTERM);
  thread_ = std::thread(&WaitingNotice::run, this);
}

WaitingNotice::~WaitingNotice() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    isOver_ = true;
  }
  over_.notify_one();
  thread_.join();
  erase();
}

void WaitingNotice::run() {
  const auto start = std::chrono::steady_clock::now();
  std::unique_lock lock(mutex_);
  for (long seconds = 1;; ++seconds) {
    if (over_.wait_until(lock, start + std::chrono::seconds(seconds), [this] { return isOver_; })) return;
    show(seconds);
  }
}

}  // namespace tools::vxcall
