/*
 * Memory that many objects share: they are made one after the other, counted together, and freed
 * together when nobody refers to any of them.
 */
#ifndef BQ_OBJECT_ARENA_H
#define BQ_OBJECT_ARENA_H

#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace bq {

class Arena {
 public:
  /* A new arena with one reference. */
  static Arena* create();

  /* The arena of an object that is flagged kInArena. */
  static Arena* of(const void* object);

  void retain();
  void release();
  uint32_t retainCount() const;

  /* Uninitialised memory, aligned to 8 bytes, that lives as long as the arena. */
  void* allocate(size_t size);

  /*
   * Registers an object outside the arena whose reference the arena takes over and drops when it
   * is freed.
   */
  void keep(const void* object);

  /*
   * What `make` returned when it was first called for a key, which lives as long as the arena. Thread-safe,
   * as nobody else allocates once the arena is shared: `make` may allocate and keep.
   */
  const void* derive(const void* key, const void* (*make)(Arena& arena, const void* key));

  /* A pointer for the user of the arena in the block of small objects in which an object is. */
  static const void*& continuation(const void* object);

  /* Whether two objects are in one block. */
  static bool shareBlock(const void* first, const void* second);

  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

 private:
  struct Block;
  Arena() = default;
  ~Arena() = default;
  void* allocateSlow(size_t size);

  uint32_t references_ = 1;
  Block* blocks_ = nullptr;
  char* next_ = nullptr;
  char* end_ = nullptr;
  struct Kept;
  Kept* kept_ = nullptr;
  std::unordered_map<const void*, const void*> derived_;
};

}  // namespace bq

#endif
