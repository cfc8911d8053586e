/* How the readers look at the positions of a document's tree. */
#ifndef VX_XML_TREE_ACCESS_H
#define VX_XML_TREE_ACCESS_H

#include <BQ/BQBase.h>
#include <BQ/BQXMLNode.h>

#include <string_view>

namespace vx {

/* The node of a position, borrowed; null for null. */
const BQXMLNode* treeGetNode(const BQTree* tree);

/* Whether the position is an element. */
bool treeIsElement(const BQTree* tree);

/* The string of the position's node, borrowed: an element's name, a text's text; "" without a node. */
const BQString* getElementName(const BQTree* tree);

/* The attributes of an element as objects, borrowed; null for anything else. */
const BQXMLElementInfo* treeGetElementInfo(const BQTree* tree);

/* The bytes of the string of a position, borrowed; without data if its node has no string. */
std::string_view textOf(const BQTree* tree);

/* The attributes of an element: names as written, in document order. */
BQIndex attributeCount(const BQTree* element);
struct TreeAttribute {
  const BQString* name;
  const BQString* value;
};
TreeAttribute attributeAt(const BQTree* element, BQIndex index);

/*
 * The first element below `tree`, in document order, with that name, whatever its prefix and the
 * case of either; borrowed, null if there is none.
 */
const BQTree* findNamedElement(const BQTree* tree, const BQString* name);

/* What follows the first colon of a name, owned by the caller; null without a colon. */
const BQString* copyQualifiedName(const BQString* name);

/*
 * The text of a run of siblings that begins at `tree`, owned by the caller: texts, CDATA sections
 * and entity references. Null if the first is none of these.
 */
const BQString* copyXMLStringFromTree(const BQTree* tree);

}  // namespace vx

#endif
