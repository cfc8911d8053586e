/* Finds the elements that other elements refer to by their id. */
#ifndef VX_SOAP_ANCHOR_TABLE_H
#define VX_SOAP_ANCHOR_TABLE_H

#include <BQ/BQBase.h>

#include "values/Owned.h"
#include "xml/NamespaceMap.h"

namespace vx {

class AnchorTable {
 public:
  /* The root is borrowed; its children are looked through at the first search, once. */
  explicit AnchorTable(const BQTree* root) : root_(root) {}

  /* The first child of the root with that id, the case of letters aside; borrowed, null if there is none. */
  const BQTree* find(const BQString* id, const NamespaceMap& namespaces);

 private:
  void fill(const NamespaceMap& namespaces);

  const BQTree* const root_;
  Owned<BQDictionary> anchors_;
};

}  // namespace vx

#endif
