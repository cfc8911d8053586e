#include "xml/ElementWalk.h"

#include <string_view>

#include <BQ/BQArray.h>
#include <BQ/BQDictionary.h>
#include <BQ/BQString.h>
#include <BQ/BQTree.h>

#include "values/Owned.h"
#include "xml/QualifiedName.h"
#include "xml/Text.h"
#include "xml/TreeAccess.h"

namespace vx {
namespace {

constexpr std::string_view kDeclaration = "xmlns";

void addDeclaration(const BQString* attribute, const BQString* value, NamespaceMap* namespaces) {
  std::string_view name = textOf(attribute);
  if (equalIgnoringCase(name, kDeclaration)) {
    namespaces->addValue(kDefaultNamespaceKey, value);
    return;
  }
  size_t start = kDeclaration.size() + 1;
  if (name.size() <= start || name[start - 1] != ':' ||
      !equalIgnoringCase(name.substr(0, start - 1), kDeclaration)) {
    return;
  }
  auto offset = static_cast<BQIndex>(start);
  auto prefix =
      own(BQStringCreateSubstring(attribute, BQRangeMake(offset, BQStringGetLength(attribute) - offset)));
  namespaces->addValue(prefix.get(), value);
}

/* Hands one child to the first matching row; false in `*matched` if there is none. */
const BQString* interrogate(const BQTree* child, NamespaceMap& namespaces,
                            const XMLElementInterrogator* table, long count, bool* matched) {
  const BQString* uri = nullptr;
  const BQString* local = nullptr;
  xmlNamespaceQualify(namespaces, getElementName(child), &uri, &local);
  auto ownedURI = own(uri);
  auto ownedLocal = own(local);
  for (const XMLElementInterrogator* row = table; row < table + count; ++row) {
    bool inNamespace = row->namespaceURI == nullptr || BQStringEqualsIgnoringCase(uri, row->namespaceURI);
    if (!inNamespace || !BQStringEqualsIgnoringCase(local, row->elementName)) continue;
    *matched = true;
    return row->handler(child, treeGetNode(child), namespaces, row->context);
  }
  return nullptr;
}

}  // namespace

void xmlGetElementNamespaces(const BQTree* element, NamespaceMap* namespaces) {
  BQIndex count = attributeCount(element);
  for (BQIndex i = 0; i < count; ++i) {
    auto [name, value] = attributeAt(element, i);
    addDeclaration(name, value, namespaces);
  }
}

const BQString* xmlInterrogateElements(const BQTree* parent, NamespaceMap& namespaces,
                                       const XMLElementInterrogator* table, long count, BQArray* unmatched) {
  for (const BQTree* child = BQTreeGetFirstChild(parent); child != nullptr;
       child = BQTreeGetNextSibling(child)) {
    if (!treeIsElement(child)) continue;
    NamespaceMap::Scope scope(namespaces);
    xmlGetElementNamespaces(child, &namespaces);
    bool matched = false;
    const BQString* message = interrogate(child, namespaces, table, count, &matched);
    if (message != nullptr) return message;
    if (!matched && unmatched != nullptr) BQArrayAppendValue(unmatched, child);
  }
  return nullptr;
}

}  // namespace vx
