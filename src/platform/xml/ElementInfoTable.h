/* The attribute records of one document: elements with the same attributes share one. */
#ifndef BQ_XML_ELEMENT_INFO_TABLE_H
#define BQ_XML_ELEMENT_INFO_TABLE_H

#include <BQ/BQXMLNode.h>

#include <array>
#include <cstddef>
#include <vector>

#include "platform/object/Arena.h"
#include "platform/xml/NameTable.h"

namespace bq {

class ElementInfoTable {
 public:
  /*
   * The record of `count` attributes, at least one, given as pairs of NUL-terminated names and
   * values. Lives as long as the arena.
   */
  const BQXMLElementInfo* find(Arena& arena, NameTable& names, const char* const* attributes, size_t count);

  /* Forgets all records. */
  void clear();

 private:
  struct Shared;
  static constexpr size_t kSharedRecords = 64;

  const BQXMLElementInfo* make(Arena& arena, NameTable& names, const char* const* attributes, size_t count);

  std::array<const Shared*, kSharedRecords> shared_{};
  std::vector<const void*> names_;
  std::vector<const void*> values_;
};

}  // namespace bq

#endif
