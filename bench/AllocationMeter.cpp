#include "AllocationMeter.h"

#include <errno.h>
#include <malloc.h>

#include <algorithm>
#include <cstddef>

/* The allocator of the C library under the names that it keeps for those who replace malloc. */
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* memory);
}

namespace {

/* Plain numbers: the measured work runs on one thread, and allocation must not need construction. */
int64_t bytesInUse;
int64_t peakBytes;
int64_t allocations;

void* countAllocated(void* memory) {
  if (memory == nullptr) return memory;
  bytesInUse += static_cast<int64_t>(malloc_usable_size(memory));
  peakBytes = std::max(peakBytes, bytesInUse);
  ++allocations;
  return memory;
}

void countFreed(void* memory) {
  if (memory != nullptr) bytesInUse -= static_cast<int64_t>(malloc_usable_size(memory));
}

}  // namespace

/* The dynamic linker finds these first, for the shared libraries too. */
extern "C" {

void* malloc(size_t size) {
  return countAllocated(__libc_malloc(size));
}

void* calloc(size_t count, size_t size) {
  return countAllocated(__libc_calloc(count, size));
}

void* realloc(void* memory, size_t size) {
  /*
   * Counted as if grown in place, which is so for blocks large enough to matter: the C library moves
   * their pages and copies nothing.
   */
  countFreed(memory);
  return countAllocated(__libc_realloc(memory, size));
}

void* memalign(size_t alignment, size_t size) {
  return countAllocated(__libc_memalign(alignment, size));
}

void* aligned_alloc(size_t alignment, size_t size) {
  return memalign(alignment, size);
}

int posix_memalign(void** memory, size_t alignment, size_t size) {
  *memory = memalign(alignment, size);
  return *memory == nullptr ? ENOMEM : 0;
}

void free(void* memory) {
  countFreed(memory);
  __libc_free(memory);
}

}  // extern "C"

namespace bench {

AllocationMeter::AllocationMeter() : bytesAtStart_(bytesInUse), countAtStart_(allocations) {
  peakBytes = bytesInUse;
}

int64_t AllocationMeter::inUse() const {
  return bytesInUse - bytesAtStart_;
}

int64_t AllocationMeter::peak() const {
  return peakBytes - bytesAtStart_;
}

int64_t AllocationMeter::allocationCount() const {
  return allocations - countAtStart_;
}

}  // namespace bench
