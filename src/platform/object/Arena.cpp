#include "platform/object/Arena.h"

#include <cstdlib>

#include <array>
#include <mutex>
#include <new>
#include <utility>

#include <sys/single_threaded.h>

#include "platform/object/Object.h"

namespace bq {
namespace {

/* Blocks lie on multiples of their size, so that an object's address leads to its block. */
constexpr size_t kBlockSize = size_t{64} << 10;

/* Freed blocks that a thread keeps for its next arena; fresh memory costs a page fault per 4 KiB. */
#ifdef __SANITIZE_ADDRESS__
constexpr size_t kMaximumSpareBlocks = 0;
#else
constexpr size_t kMaximumSpareBlocks = 16;
#endif

/*
 * What a block takes of that: the allocator puts its own words between blocks, and the next block then
 * begins at the next multiple.
 */
constexpr size_t kUsableSize = kBlockSize - 16;

/* Guards what is made from shared arenas. */
std::mutex derivingMutex;

uintptr_t blockAddress(const void* object) {
  return reinterpret_cast<uintptr_t>(object) & ~uintptr_t{kBlockSize - 1};
}

void* allocateBlock(size_t size) {
  void* block = nullptr;
  return posix_memalign(&block, kBlockSize, size) == 0 ? block : nullptr;
}

size_t roundUp(size_t size, size_t step) {
  return (size + step - 1) & ~(step - 1);
}

class SpareBlocks {
 public:
  SpareBlocks() = default;
  SpareBlocks(const SpareBlocks&) = delete;
  SpareBlocks& operator=(const SpareBlocks&) = delete;
  /* What other objects of the thread release later is not kept any more. */
  ~SpareBlocks() {
    while (count_ > 0) std::free(blocks_[--count_]);
    count_ = kMaximumSpareBlocks;
    blocks_.fill(nullptr);
  }

  void* take() {
    void* block = count_ == 0 ? nullptr : std::exchange(blocks_[--count_], nullptr);
    return block != nullptr ? block : allocateBlock(kUsableSize);
  }

  void give(void* block) {
    if (count_ == kMaximumSpareBlocks) return std::free(block);
    blocks_[count_++] = block;
  }

 private:
  size_t count_ = 0;
  std::array<void*, kMaximumSpareBlocks> blocks_{};
};

thread_local SpareBlocks spareBlocks;

}  // namespace

struct Arena::Block {
  Arena* arena;
  Block* next;
  bool large;
  const void* continuation;
};

struct Arena::Kept {
  const void* object;
  Kept* next;
};

Arena* Arena::create() {
  return new Arena;
}

Arena* Arena::of(const void* object) {
  return reinterpret_cast<const Block*>(blockAddress(object))->arena;
}

void Arena::retain() {
  if (__libc_single_threaded) {
    ++references_;
  } else {
    __atomic_fetch_add(&references_, 1, __ATOMIC_RELAXED);
  }
}

void Arena::release() {
  uint32_t before =
      __libc_single_threaded ? references_-- : __atomic_fetch_sub(&references_, 1, __ATOMIC_ACQ_REL);
  if (before != 1) return;
  for (Kept* kept = kept_; kept != nullptr; kept = kept->next) BQRelease(kept->object);
  for (Block* block = blocks_; block != nullptr;) {
    Block* next = block->next;
    if (block->large) {
      std::free(block);
    } else {
      spareBlocks.give(block);
    }
    block = next;
  }
  delete this;
}

uint32_t Arena::retainCount() const {
  return __atomic_load_n(&references_, __ATOMIC_RELAXED);
}

void* Arena::allocate(size_t size) {
  size = roundUp(size, 8);
  if (size <= static_cast<size_t>(end_ - next_)) {
    void* memory = next_;
    next_ += size;
    return memory;
  }
  return allocateSlow(size);
}

/*
 * A large object gets a block of its own, in which it comes first: only the beginning of an object
 * must lie within the block size from the block's start. The block in use stays in use.
 */
void* Arena::allocateSlow(size_t size) {
  bool large = size > kBlockSize / 4;
  size_t blockSize = large ? sizeof(Block) + size : kUsableSize;
  void* memory = large ? allocateBlock(blockSize) : spareBlocks.take();
  if (memory == nullptr) failAllocation(blockSize);
  Block* block = new (memory) Block{this, blocks_, large, nullptr};
  blocks_ = block;
  char* first = static_cast<char*>(memory) + sizeof(Block);
  if (large) return first;
  next_ = first + size;
  end_ = static_cast<char*>(memory) + blockSize;
  return first;
}

void Arena::keep(const void* object) {
  kept_ = new (allocate(sizeof(Kept))) Kept{object, kept_};
}

const void* Arena::derive(const void* key, const void* (*make)(Arena& arena, const void* key)) {
  std::lock_guard lock(derivingMutex);
  auto [found, isNew] = derived_.try_emplace(key);
  if (isNew) found->second = make(*this, key);
  return found->second;
}

const void*& Arena::continuation(const void* object) {
  return reinterpret_cast<Block*>(blockAddress(object))->continuation;
}

bool Arena::shareBlock(const void* first, const void* second) {
  return blockAddress(first) == blockAddress(second);
}

}  // namespace bq
