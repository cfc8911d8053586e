#include "xml/TreeAccess.h"

#include <optional>
#include <string_view>

#include <BQ/BQString.h>
#include <BQ/BQTree.h>

#include "diag/Log.h"
#include "diag/Switches.h"
#include "values/Owned.h"
#include "xml/Entities.h"
#include "xml/Text.h"

namespace vx {
namespace {

/* Returns true if a name, or what follows its first colon, is the wanted one. */
bool hasLocalName(std::string_view text, std::string_view wanted) {
  if (equalIgnoringCase(text, wanted)) return true;
  size_t colon = text.find(':');
  return colon != std::string_view::npos && equalIgnoringCase(text.substr(colon + 1), wanted);
}

/* The text that a position contributes, borrowed; nothing for one that is not text. */
std::optional<std::string_view> pieceOf(const BQTree* tree) {
  const BQXMLNode* node = treeGetNode(tree);
  switch (BQXMLNodeGetTypeCode(node)) {
    case kBQXMLNodeTypeText:
    case kBQXMLNodeTypeCDATASection:
      return textOf(tree);
    case kBQXMLNodeTypeEntityReference:
      return textOf(decodeEntityReference(BQXMLNodeGetString(node)));
    default:
      if (gVXDebugVerbose != 0) {
        _vxLogf("strange node in the middle of a string: %d\n", static_cast<int>(BQXMLNodeGetTypeCode(node)));
      }
      return std::nullopt;
  }
}

const BQString* copyPiece(std::string_view piece) {
  return BQStringCreateWithUTF8(piece.data(), static_cast<BQIndex>(piece.size()));
}

}  // namespace

const BQXMLNode* treeGetNode(const BQTree* tree) {
  return BQXMLTreeGetNode(tree);
}

bool treeIsElement(const BQTree* tree) {
  return BQXMLNodeGetTypeCode(treeGetNode(tree)) == kBQXMLNodeTypeElement;
}

const BQString* getElementName(const BQTree* tree) {
  const BQXMLNode* node = treeGetNode(tree);
  return node == nullptr ? BQSTR("") : BQXMLNodeGetString(node);
}

const BQXMLElementInfo* treeGetElementInfo(const BQTree* tree) {
  const BQXMLNode* node = treeGetNode(tree);
  if (BQXMLNodeGetTypeCode(node) != kBQXMLNodeTypeElement) return nullptr;
  return static_cast<const BQXMLElementInfo*>(BQXMLNodeGetInfoPtr(node));
}

std::string_view textOf(const BQTree* tree) {
  const BQXMLNode* node = treeGetNode(tree);
  if (node == nullptr) return "";
  BQIndex length = 0;
  const char* bytes = BQXMLNodeGetUTF8(node, &length);
  return {bytes, static_cast<size_t>(length)};
}

BQIndex attributeCount(const BQTree* element) {
  return BQXMLNodeGetAttributeCount(treeGetNode(element));
}

TreeAttribute attributeAt(const BQTree* element, BQIndex index) {
  const BQString* value = nullptr;
  const BQString* name = BQXMLNodeGetAttributeAtIndex(treeGetNode(element), index, &value);
  return {name, value};
}

const BQTree* findNamedElement(const BQTree* tree, const BQString* name) {
  for (const BQTree* child = BQTreeGetFirstChild(tree); child != nullptr;
       child = BQTreeGetNextSibling(child)) {
    if (!treeIsElement(child)) {
      if (gVXDebugVerbose != 0) {
        _vxLogf("findNamedElement: Ignoring type %d\n",
                static_cast<int>(BQXMLNodeGetTypeCode(treeGetNode(child))));
      }
      continue;
    }
    if (hasLocalName(textOf(child), textOf(name))) return child;
    if (const BQTree* found = findNamedElement(child, name)) return found;
  }
  return nullptr;
}

const BQString* copyQualifiedName(const BQString* name) {
  size_t colon = textOf(name).find(':');
  if (colon == std::string_view::npos) return nullptr;
  auto start = static_cast<BQIndex>(colon + 1);
  return BQStringCreateSubstring(name, BQRangeMake(start, BQStringGetLength(name) - start));
}

const BQString* copyXMLStringFromTree(const BQTree* tree) {
  if (tree == nullptr) return nullptr;
  std::optional<std::string_view> piece = pieceOf(tree);
  if (!piece) return nullptr;
  const BQTree* next = BQTreeGetNextSibling(tree);
  if (next == nullptr) return copyPiece(*piece);
  auto joined = own(BQStringCreateMutable(0));
  for (; piece; next = BQTreeGetNextSibling(next)) {
    BQStringAppendUTF8(joined.get(), piece->data(), static_cast<BQIndex>(piece->size()));
    piece = next == nullptr ? std::nullopt : pieceOf(next);
  }
  /* A short immutable string takes half of the memory, a second long one would double it. */
  constexpr BQIndex kShort = 1024;
  return BQStringGetLength(joined.get()) > kShort ? joined.release() : BQStringCreateCopy(joined.get());
}

}  // namespace vx
