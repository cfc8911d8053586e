/* The attributes of one document: elements with the same attributes often share one list. */
#ifndef BQ_XML_ATTRIBUTE_TABLE_H
#define BQ_XML_ATTRIBUTE_TABLE_H

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "platform/object/Arena.h"
#include "platform/xml/NameTable.h"
#include "platform/xml/Tree.h"

namespace bq {

/* As it is in a tag. */
struct Attribute {
  std::string_view name;
  std::string_view value;
};

class AttributeTable {
 public:
  /* Forgets all lists. */
  void begin() { recent_.fill(nullptr); }

  /* The list of some attributes, in the arena; null if there are too many names. */
  const AttributeList* find(Arena& arena, NameTable& names, std::span<const Attribute> attributes);

 private:
  static constexpr size_t kRecentLists = 64;

  std::array<const AttributeList*, kRecentLists> recent_{};
};

}  // namespace bq

#endif
