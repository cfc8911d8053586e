/* Finds the entries of a large dictionary by the hash of their keys. */
#ifndef BQ_COLLECTIONS_HASH_INDEX_H
#define BQ_COLLECTIONS_HASH_INDEX_H

#include <cstddef>
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
    return slots_[slotOf(hash, matches)].entry;
  }

  /* Takes that entry out. Nothing is left in its place, so that one key may come and go for ever. */
  template <class Matches>
  uint32_t remove(uint32_t hash, Matches matches) {
    size_t position = slotOf(hash, matches);
    uint32_t entry = slots_[position].entry;
    if (entry != kNone) closeGap(position);
    return entry;
  }

 private:
  struct Slot {
    uint32_t hash;
    uint32_t entry;
  };

  size_t mask() const { return slots_.size() - 1; }

  /* Where the entry is, or else the free slot that ended the search. */
  template <class Matches>
  size_t slotOf(uint32_t hash, Matches matches) const {
    size_t position = hash & mask();
    while (slots_[position].entry != kNone) {
      const Slot& slot = slots_[position];
      if (slot.hash == hash && matches(slot.entry)) break;
      position = (position + 1) & mask();
    }
    return position;
  }

  /* Moves back the slots behind a removed one that their search would no longer reach. */
  void closeGap(size_t gap) {
    for (size_t next = (gap + 1) & mask(); slots_[next].entry != kNone; next = (next + 1) & mask()) {
      size_t wanted = slots_[next].hash & mask();
      if (((next - wanted) & mask()) < ((next - gap) & mask())) continue;
      slots_[gap] = slots_[next];
      gap = next;
    }
    slots_[gap].entry = kNone;
    --used_;
  }

  std::vector<Slot> slots_;
  size_t used_ = 0;
};

}  // namespace bq

#endif
