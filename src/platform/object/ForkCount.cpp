#include "platform/object/ForkCount.h"

#include <pthread.h>

#include <atomic>

namespace bq {
namespace {

std::atomic<uint32_t> forks{0};

[[maybe_unused]] const int isCounting =
    pthread_atfork(nullptr, nullptr, [] { forks.fetch_add(1, std::memory_order_relaxed); });

}  // namespace

uint32_t forkCount() {
  return forks.load(std::memory_order_relaxed);
}

}  // namespace bq
