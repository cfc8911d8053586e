/* Finds the entries of a large dictionary by the hash of their keys. */
#ifndef BQ_COLLECTIONS_HASH_INDEX_H
#define BQ_COLLECTIONS_HASH_INDEX_H

#include <cstdint>
#include <vector>

namespace bq {

/*
 * Open addressing with linear probing. A slot holds the hash and the number of an entry; the
 * entries themselves lie elsewhere, in the order of the dictionary.
 */
class HashIndex {
 public:
  static constexpr uint32_t kNone = 0xFFFFFFFF;

  /* Room for `count` entries. Forgets everything. */
  void reset(size_t count) {
    size_t size = 16;
    while (size < 2 * count) size *= 2;
    slots_.assign(size, Slot{0, kNone});
    used_ = 0;
  }

  /* Whether another entry makes the index slow; it is then to be reset and filled again. */
  bool isFull() const { return 4 * (used_ + 1) > 3 * slots_.size(); }

  void insert(uint32_t hash, uint32_t entry) {
    size_t position = hash & mask();
    while (slots_[position].entry != kNone) position = (position + 1) & mask();
    slots_[position] = Slot{hash, entry};
    ++used_;
  }

  /* The first entry of that hash for which `matches` holds. */
  template <class Matches>
  uint32_t find(uint32_t hash, Matches matches) const {
    for (size_t position = hash & mask(); slots_[position].entry != kNone;
         position = (position + 1) & mask()) {
      const Slot& slot = slots_[position];
      if (slot.hash == hash && matches(slot.entry)) return slot.entry;
    }
    return kNone;
  }

 private:
  struct Slot {
    uint32_t hash;
    uint32_t entry;
  };

  size_t mask() const { return slots_.size() - 1; }

  std::vector<Slot> slots_;
  size_t used_ = 0;
};

}  // namespace bq

#endif
