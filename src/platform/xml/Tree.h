/* The memory layout of tree positions and their nodes. */
#ifndef BQ_XML_TREE_H
#define BQ_XML_TREE_H

#include <BQ/BQString.h>
#include <BQ/BQTree.h>
#include <BQ/BQXMLNode.h>

#include <span>
#include <string_view>

#include "platform/object/Arena.h"
#include "platform/object/Object.h"
#include "platform/text/StringImpl.h"

namespace bq {

inline constexpr unsigned kNodeTypeShift = 8;
inline constexpr uint16_t kNodeTypes = 0xF << kNodeTypeShift;
static_assert(1u << kNodeTypeShift == kClassFlag);
/* The node holds a short text itself; `retainCount` is its length. */
inline constexpr uint16_t kShortText = kClassFlag << 4;
inline constexpr uint16_t kHasAttributes = kClassFlag << 5;

struct AttributeEntry {
  const BQString* name;
  const BQString* value;
};

/* The attributes of an element; their entries follow it in the arena. */
struct AttributeList {
  size_t count;

  std::span<const AttributeEntry> entries() const {
    return {reinterpret_cast<const AttributeEntry*>(this + 1), count};
  }
};

}  // namespace bq

/*
 * The type of node is in the class bits of the flags. Strings and attributes are in the arena. A short text
 * becomes a string when somebody asks for one, because most readers need only its bytes.
 */
struct BQXMLNode {
  BQRuntimeBase base;
  union {
    const BQString* string;
    char characters[8];
  };

  BQXMLNodeTypeCode type() const {
    return static_cast<BQXMLNodeTypeCode>((base.flags & bq::kNodeTypes) >> bq::kNodeTypeShift);
  }
  bool isShortText() const { return (base.flags & bq::kShortText) != 0; }
  std::string_view text() const {
    return isShortText() ? std::string_view(characters, base.retainCount) : bq::viewOf(string);
  }
};

/*
 * A position and its node are one piece of an arena. The node that follows in the document, if it is the
 * first child or the next sibling, is found by its distance, which takes the place of the retain count:
 * positions follow each other in the arena too.
 */
struct BQTree {
  BQRuntimeBase base;
  BQXMLNode node;

  const BQTree* follower() const {
    if (base.retainCount == kNoFollower) return nullptr;
    if (base.retainCount == kInAnotherBlock) return static_cast<const BQTree*>(bq::Arena::continuation(this));
    return reinterpret_cast<const BQTree*>(reinterpret_cast<const char*>(this) + base.retainCount);
  }

  void setFollower(const BQTree* follower) {
    if (bq::Arena::shareBlock(this, follower)) {
      base.retainCount = static_cast<uint32_t>(reinterpret_cast<const char*>(follower) -
                                               reinterpret_cast<const char*>(this));
    } else {
      base.retainCount = kInAnotherBlock;
      bq::Arena::continuation(this) = follower;
    }
  }

  static constexpr uint32_t kNoFollower = 0, kInAnotherBlock = 1;
};

namespace bq {

/* An element or the document. Its follower is its first child, that of other positions the next sibling. */
struct Parent : BQTree {
  const BQTree* nextSibling;
};

struct ParentWithAttributes : Parent {
  const AttributeList* attributes;
};

/* What a position is, by its node. */
inline const Parent* asParent(const BQTree* tree) {
  BQXMLNodeTypeCode type = tree->node.type();
  bool isParent = type == kBQXMLNodeTypeElement || type == kBQXMLNodeTypeDocument;
  return isParent ? static_cast<const Parent*>(tree) : nullptr;
}

/* A short text for a node under the name of a class: `<BQXMLNode element name>`. Owned by the caller. */
const BQString* copyNodeDescription(const char* className, const BQXMLNode* node);

}  // namespace bq

#endif
