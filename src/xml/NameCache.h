/* Shares the strings of names that come again and again in a document. */
#ifndef VX_XML_NAME_CACHE_H
#define VX_XML_NAME_CACHE_H

#include <BQ/BQBase.h>

#include <array>
#include <cstddef>
#include <string_view>

#include "values/Owned.h"

namespace vx {

/* Holds the names seen last. What it gives has memory of its own and does not keep the document alive. */
class NameCache {
 public:
  /* A string of that text. */
  Owned<const BQString> copyOf(std::string_view name);

 private:
  static constexpr size_t kSize = 32;
  std::array<Owned<const BQString>, kSize> names_;
};

}  // namespace vx

#endif
