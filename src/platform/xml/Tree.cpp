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
  const bq::Parent* parent = bq::isTree(tree) ? bq::asParent(tree) : nullptr;
  return parent != nullptr ? parent->follower() : nullptr;
}

const BQTree* BQTreeGetNextSibling(const BQTree* tree) {
  if (!bq::isTree(tree)) return nullptr;
  const bq::Parent* parent = bq::asParent(tree);
  return parent != nullptr ? parent->nextSibling : tree->follower();
}

BQIndex BQTreeGetChildCount(const BQTree* tree) {
  BQIndex count = 0;
  for (const BQTree* child = BQTreeGetFirstChild(tree); child != nullptr; child = BQTreeGetNextSibling(child))
    ++count;
  return count;
}

void BQTreeApplyFunctionToChildren(const BQTree* tree, void (*function)(const void* child, void* context),
                                   void* context) {
  if (function == nullptr) return;
  for (const BQTree* child = BQTreeGetFirstChild(tree); child != nullptr;
       child = BQTreeGetNextSibling(child)) {
    function(child, context);
  }
}
