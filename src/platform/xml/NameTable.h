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

struct Name {
  uint64_t hash;
  /* In the arena. */
  const BQString* string;
  /*
   * An ordinary string that the arena keeps, made when the name is first that of an attribute. The
   * dictionary of an element can outlive the arena, and a string of the arena that it retained would
   * keep the arena and with it the dictionary alive for ever.
   */
  const BQString* attributeName;
};

class NameTable {
 public:
  /* The entry of a name that is not empty, which is added if it is new. Lives as long as the arena. */
  Name& find(Arena& arena, std::string_view name);

  /* The ordinary string of a name; borrowed from the arena. */
  static const BQString* attributeName(Arena& arena, Name& name);

  /* Forgets all names. */
  void clear();

 private:
  Name*& slotFor(uint64_t hash, std::string_view name);
  Name& add(Arena& arena, Name*& slot, uint64_t hash, std::string_view name);
  void grow();

  static constexpr size_t kRecentNames = 128;
  static constexpr size_t kInitialSlots = 128;

  /* Where a name was last found, by a hash too weak to trust but quicker than the real one. */
  std::array<Name*, kRecentNames> recent_{};
  /* Open addressing; the size is a power of two, at most half full. */
  std::vector<Name*> slots_ = std::vector<Name*>(kInitialSlots);
  size_t count_ = 0;
};

}  // namespace bq

#endif
