#include "platform/xml/Tree.h"

#include <BQ/BQRuntime.h>

namespace bq {
namespace {

const BQString* copyTreeDescription(BQTypeRef object) {
  return copyNodeDescription("BQTree", &static_cast<const BQTree*>(object)->node);
}

constexpr BQRuntimeClass kTreeClass = {
    0, "BQTree", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, copyTreeDescription};

bool isTree(const BQTree* tree) {
  return isInstance(tree, BQTreeGetTypeID());
}

}  // namespace
}  // namespace bq

BQTypeID BQTreeGetTypeID(void) {
  static const BQTypeID typeID = _BQRuntimeRegisterClass(&bq::kTreeClass);
  return typeID;
}

const BQXMLNode* BQXMLTreeGetNode(const BQTree* tree) {
  return bq::isTree(tree) ? &tree->node : nullptr;
}

const BQTree* BQTreeGetFirstChild(const BQTree* tree) {
  return bq::isTree(tree) ? tree->firstChild : nullptr;
}

const BQTree* BQTreeGetNextSibling(const BQTree* tree) {
  return bq::isTree(tree) ? tree->nextSibling : nullptr;
}

BQIndex BQTreeGetChildCount(const BQTree* tree) {
  BQIndex count = 0;
  for (const BQTree* child = BQTreeGetFirstChild(tree); child != nullptr; child = child->nextSibling) ++count;
  return count;
}

void BQTreeApplyFunctionToChildren(const BQTree* tree, void (*function)(const void* child, void* context),
                                   void* context) {
  if (function == nullptr) return;
  for (const BQTree* child = BQTreeGetFirstChild(tree); child != nullptr; child = child->nextSibling) {
    function(child, context);
  }
}
