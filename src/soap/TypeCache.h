/* The kinds of the type names seen last: most elements of a document share a few. */
#ifndef VX_SOAP_TYPE_CACHE_H
#define VX_SOAP_TYPE_CACHE_H

#include <BQ/BQBase.h>
#include <VX/VXTypes.h>

#include <array>
#include <cstddef>

#include "values/Owned.h"
#include "xml/NamespaceMap.h"

namespace vx {

class TypeCache {
 public:
  /* The kind of a type name in the namespaces in force, of one document; 0 if it is unknown. */
  VXTypeID kindOf(const BQString* typeName, const NamespaceMap& namespaces);

 private:
  struct Entry {
    Owned<const BQString> typeName;
    uint64_t version; /* of the namespaces */
    VXTypeID kind;
  };

  static constexpr size_t kSize = 8;
  std::array<Entry, kSize> entries_{};
  size_t next_ = 0;
};

}  // namespace vx

#endif
