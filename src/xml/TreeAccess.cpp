#include "xml/TreeAccess.h"

#include <string_view>

#include <BQ/BQString.h>
#include <BQ/BQTree.h>

#include "diag/Log.h"
#include "diag/Switches.h"
#include "xml/Entities.h"
#include "xml/Text.h"

namespace vx {
namespace {

/* Whether a name, or what stands behind its first colon, is the wanted one. */
bool hasLocalName(const BQString* name, std::string_view wanted) {
  std::string_view text = textOf(name);
  if (equalIgnoringCase(text, wanted)) return true;
  size_t colon = text.find(':');
  return colon != std::string_view::npos && equalIgnoringCase(text.substr(colon + 1), wanted);
}

/* The text that a node stands for, borrowed; null for a node that is no text. */
const BQString* pieceOf(const BQXMLNode* node) {
  switch (BQXMLNodeGetTypeCode(node)) {
    case kBQXMLNodeTypeText:
    case kBQXMLNodeTypeCDATASection:
      return BQXMLNodeGetString(node);
    case kBQXMLNodeTypeEntityReference:
      return decodeEntityReference(BQXMLNodeGetString(node));
    default:
      if (gVXDebugVerbose != 0) {
        _vxLogf("strange node in the middle of a string: %d\n", static_cast<int>(BQXMLNodeGetTypeCode(node)));
      }
      return nullptr;
  }
}

/* A copy with memory of its own, so that the string does not keep the document alive. */
const BQString* copyPiece(const BQString* piece) {
  return BQStringCreateSubstring(piece, BQRangeMake(0, BQStringGetLength(piece)));
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
    if (hasLocalName(getElementName(child), textOf(name))) return child;
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
  if (treeGetNode(tree) == nullptr) return nullptr;
  const BQString* piece = pieceOf(treeGetNode(tree));
  if (piece == nullptr) return nullptr;
  const BQTree* next = BQTreeGetNextSibling(tree);
  if (next == nullptr) return copyPiece(piece);
  BQString* joined = BQStringCreateMutable(0);
  for (;; next = BQTreeGetNextSibling(next)) {
    BQStringAppend(joined, piece);
    if (treeGetNode(next) == nullptr) break;
    piece = pieceOf(treeGetNode(next));
    if (piece == nullptr) break;
  }
  return joined;
}

}  // namespace vx
