/* The memory layout of tree positions and their nodes. */
#ifndef BQ_XML_TREE_H
#define BQ_XML_TREE_H

#include <BQ/BQString.h>
#include <BQ/BQTree.h>
#include <BQ/BQXMLNode.h>

#include "platform/object/Object.h"

/* The kind of node stands in the class bits of the flags. */
struct BQXMLNode {
  BQRuntimeBase base;
  const BQString* string;
  const BQXMLElementInfo* info;
};

/* A position and its node are one piece of an arena; everything that they point to lives in it too. */
struct BQTree {
  BQRuntimeBase base;
  BQTree* firstChild;
  BQTree* nextSibling;
  BQXMLNode node;
};

namespace bq {

inline constexpr unsigned kNodeTypeShift = 8;
static_assert(1u << kNodeTypeShift == kClassFlag);

inline constexpr uint16_t nodeFlags(BQXMLNodeTypeCode type) {
  return static_cast<uint16_t>(kInArena | static_cast<unsigned>(type) << kNodeTypeShift);
}

/* A short text for a node under the name of a class: `<BQXMLNode element name>`. Owned by the caller. */
const BQString* copyNodeDescription(const char* className, const BQXMLNode* node);

}  // namespace bq

#endif
