/* The walk over the children of an element, driven by a table. */
#ifndef VX_XML_ELEMENT_WALK_H
#define VX_XML_ELEMENT_WALK_H

#include <BQ/BQBase.h>

#include "xml/NamespaceMap.h"

namespace vx {

/*
 * Called for a matching child with its position, its node, the namespaces in force there, and the
 * row's context. A message ends the walk, null lets it go on. A message is a constant or owned by
 * whoever receives it at last.
 */
using XMLElementHandler = const BQString* (*)(const BQTree* tree, const BQXMLNode* node,
                                              NamespaceMap& namespaces, void* context);

/* Which elements a handler is for. */
struct XMLElementInterrogator {
  const BQString* namespaceURI; /* null: in any namespace or none */
  const BQString* elementName;  /* the local name; null: no element */
  XMLElementHandler handler;
  void* context;
};

/* Adds the namespaces that an element declares to a map. */
void xmlGetElementNamespaces(const BQTree* element, NamespaceMap* namespaces);

/*
 * Hands each child element to the first row that matches it; names and namespaces are compared
 * without regard to case. Elements that no row matches are appended to `unmatched`, if it is given.
 * While a child is handled, `namespaces` has what it declares. Returns the message that ended the walk,
 * or null.
 */
const BQString* xmlInterrogateElements(const BQTree* parent, NamespaceMap& namespaces,
                                       const XMLElementInterrogator* table, long count, BQArray* unmatched);

}  // namespace vx

#endif
