/* The names of one document: equal names are one string. */
#ifndef BQ_XML_NAME_TABLE_H
#define BQ_XML_NAME_TABLE_H

#include <BQ/BQString.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/object/Arena.h"

namespace bq {

class NameTable {
 public:
  /* Forgets all names, and takes up to `limit` others. */
  void begin(size_t limit);

  /* The string of a name that is not empty, in the arena; null if it would be one name too many. */
  const BQString* find(Arena& arena, std::string_view name);

 private:
  const BQString*& slotFor(uint64_t hash, std::string_view name);
  void grow();

  static constexpr size_t kRecentNames = 128;
  static constexpr size_t kInitialSlots = 128;

  /* Where a name was last found, by a hash too weak to trust but quicker than the real one. */
  std::array<const BQString*, kRecentNames> recent_{};
  /* Open addressing; the size is a power of two, at most three quarters full. */
  std::vector<const BQString*> slots_ = std::vector<const BQString*>(kInitialSlots);
  size_t count_ = 0;
  size_t limit_ = 0;
};

}  // namespace bq

#endif
