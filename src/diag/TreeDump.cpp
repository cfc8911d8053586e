#include "diag/TreeDump.h"

#include <BQ/BQArray.h>
#include <BQ/BQDictionary.h>
#include <BQ/BQString.h>
#include <BQ/BQTree.h>
#include <BQ/BQXMLNode.h>

#include "diag/Log.h"
#include "values/Owned.h"
#include "xml/TreeAccess.h"
#include "xml/XMLBuffer.h"

namespace vx {
namespace {

constexpr const char* kTypeNames[] = {
    nullptr,
    "kBQXMLNodeTypeDocument",
    "kBQXMLNodeTypeElement",
    "kBQXMLNodeTypeAttribute",
    "kBQXMLNodeTypeProcessingInstruction",
    "kBQXMLNodeTypeComment",
    "kBQXMLNodeTypeText",
    "kBQXMLNodeTypeCDATASection",
    "kBQXMLNodeTypeDocumentFragment",
    "kBQXMLNodeTypeEntity",
    "kBQXMLNodeTypeEntityReference",
    "kBQXMLNodeTypeDocumentType",
    "kBQXMLNodeTypeWhitespace",
    "kBQXMLNodeTypeNotation",
    "kBQXMLNodeTypeElementTypeDeclaration",
    "kBQXMLNodeTypeAttributeListDeclaration",
};

Owned<const BQString> typeName(BQXMLNodeTypeCode code) {
  bool known = code >= kBQXMLNodeTypeDocument && code <= kBQXMLNodeTypeAttributeListDeclaration;
  return own(
      BQStringCreateWithCString(known ? kTypeNames[code] : "??unknown node type??", kBQStringEncodingUTF8));
}

void printAttributes(const BQXMLElementInfo* info, int level) {
  BQIndex count = BQArrayGetCount(info->attributeOrder);
  if (info->attributes == nullptr || count == 0) return;
  vxPrintf(BQSTR("%@[ -- %d ATTRIBUTES --\n"), XMLBuffer::getIndentString(level + 2),
           static_cast<int>(count));
  for (BQIndex i = 0; i < count; ++i) {
    BQTypeRef name = BQArrayGetValueAtIndex(info->attributeOrder, i);
    const BQString* indent = XMLBuffer::getIndentString(level + 3);
    if (name == nullptr) {
      vxPrintf(BQSTR("%@{ null key at %d }\n"), indent, static_cast<int>(i));
    } else {
      auto* value = static_cast<const BQString*>(BQDictionaryGetValue(info->attributes, name));
      vxPrintf(BQSTR("%@{ %@: %@ }\n"), indent, name, onOneLine(value).get());
    }
  }
  vxPrintf(BQSTR("%@]\n"), XMLBuffer::getIndentString(level + 2));
}

void describe(const BQTree* tree, int level) {
  const BQXMLNode* node = treeGetNode(tree);
  BQXMLNodeTypeCode code = BQXMLNodeGetTypeCode(node);
  if (code != kBQXMLNodeTypeWhitespace) {
    auto name = typeName(code);
    vxPrintf(BQSTR("%@ - 0x%x: type %@, name %@\n"), XMLBuffer::getIndentString(level),
             static_cast<unsigned>(reinterpret_cast<uintptr_t>(node)), name.get(),
             onOneLine(BQXMLNodeGetString(node)).get());
    const BQXMLElementInfo* info = treeGetElementInfo(tree);
    if (info != nullptr) printAttributes(info, level);
  }
  BQTreeApplyFunctionToChildren(tree, _describeChild,
                                reinterpret_cast<void*>(static_cast<intptr_t>(level) + 1));
}

}  // namespace

void _describeChild(const void* child, void* context) {
  describe(static_cast<const BQTree*>(child), static_cast<int>(reinterpret_cast<intptr_t>(context)));
}

void dumpXMLTree(const BQTree* tree, int depth) {
  BQTreeApplyFunctionToChildren(tree, _describeChild,
                                reinterpret_cast<void*>(static_cast<intptr_t>(depth) + 1));
}

}  // namespace vx
