/* The attribute records of one document: elements with the same attributes share one. */
#ifndef BQ_XML_ELEMENT_INFO_TABLE_H
#define BQ_XML_ELEMENT_INFO_TABLE_H

#include <BQ/BQXMLNode.h>

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "platform/object/Arena.h"
#include "platform/xml/NameTable.h"

namespace bq {

/* As it stands in a tag. */
struct Attribute {
  std::string_view name;
  std::string_view value;
};

class ElementInfoTable {
 public:
  /* The record of some attributes. Lives as long as the arena. */
  const BQXMLElementInfo* find(Arena& arena, NameTable& names, std::span<const Attribute> attributes);

  /* Forgets all records. */
  void clear();

 private:
  struct Shared;
  static constexpr size_t kSharedRecords = 64;

  const BQXMLElementInfo* make(Arena& arena, NameTable& names, std::span<const Attribute> attributes);

  std::array<const Shared*, kSharedRecords> shared_{};
  std::vector<const void*> names_;
  std::vector<const void*> values_;
};

}  // namespace bq

#endif
