/* Finds the entries of a large dictionary by the hash of their keys. */
#ifndef BQ_COLLECTIONS_HASH_INDEX_H
#define BQ_COLLECTIONS_HASH_INDEX_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bq {

/*
 * Open addressing with linear probing. A slot holds the number of an entry and nothing else, because memory
 * counts more than an unneeded look at a key; the entries are in the order of the dictionary.
 */
class HashIndex {
 public:
  static constexpr uint32_t kNone = 0xFFFFFFFF;

  /* Makes room for `count` entries and one more. Forgets everything. */
  void reset(size_t count) {
    size_t size = 16;
    while (isFullWith(count + 1, size)) size *= 2;
    slots_ = {}; /* frees the old slots before there are new ones */
    slots_.assign(size, kNone);
    used_ = 0;
  }

  /* Returns true if another entry makes the index slow; it must then be reset and filled again. */
  bool isFull() const { return isFullWith(used_ + 1, slots_.size()); }

  void insert(uint32_t hash, uint32_t entry) {
    slots_[slotOf(hash, [](uint32_t) { return false; })] = entry;
    ++used_;
  }

  /* The first entry of that hash for which `matches` holds. */
  template <class Matches>
  uint32_t find(uint32_t hash, Matches matches) const {
    return slots_[slotOf(hash, matches)];
  }

  /*
   * Takes that entry out. Nothing is left in its place, so that one key may come and go for ever. `hashOf`
   * gives the hash of any entry.
   */
  template <class Matches, class HashOf>
  uint32_t remove(uint32_t hash, Matches matches, HashOf hashOf) {
    size_t position = slotOf(hash, matches);
    uint32_t entry = slots_[position];
    if (entry != kNone) closeGap(position, hashOf);
    return entry;
  }

 private:
  static bool isFullWith(size_t used, size_t size) { return 4 * used > 3 * size; }
  size_t mask() const { return slots_.size() - 1; }

  /* Where the entry is, or else the free slot that ended the search. */
  template <class Matches>
  size_t slotOf(uint32_t hash, Matches matches) const {
    size_t position = hash & mask();
    while (slots_[position] != kNone && !matches(slots_[position])) position = (position + 1) & mask();
    return position;
  }

  /* Moves back the slots after a removed one that their search would no longer reach. */
  template <class HashOf>
  void closeGap(size_t gap, HashOf hashOf) {
    for (size_t next = (gap + 1) & mask(); slots_[next] != kNone; next = (next + 1) & mask()) {
      size_t wanted = hashOf(slots_[next]) & mask();
      if (((next - wanted) & mask()) < ((next - gap) & mask())) continue;
      slots_[gap] = slots_[next];
      gap = next;
    }
    slots_[gap] = kNone;
    --used_;
  }

  std::vector<uint32_t> slots_;
  size_t used_ = 0;
};

}  // namespace bq

#endif
