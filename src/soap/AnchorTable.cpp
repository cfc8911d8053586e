#include "soap/AnchorTable.h"

#include <string>

#include <BQ/BQDictionary.h>
#include <BQ/BQString.h>
#include <BQ/BQTree.h>

#include "soap/SOAPValueReader.h"
#include "xml/Text.h"

namespace vx {
namespace {

/* Ids are the keys of a dictionary, which a peer cannot make slow, in lower case. */
Owned<const BQString> keyOf(const BQString* id) {
  std::string key(textOf(id));
  for (char& character : key) character = foldCase(character);
  return own(BQStringCreateWithUTF8(key.data(), static_cast<BQIndex>(key.size())));
}

}  // namespace

const BQTree* AnchorTable::find(const BQString* id, const NamespaceMap& namespaces) {
  if (textOf(id).empty()) return nullptr;
  if (anchors_ == nullptr) fill(namespaces);
  return static_cast<const BQTree*>(BQDictionaryGetValue(anchors_.get(), keyOf(id).get()));
}

void AnchorTable::fill(const NamespaceMap& namespaces) {
  anchors_ = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
  for (const BQTree* child = BQTreeGetFirstChild(root_); child != nullptr;
       child = BQTreeGetNextSibling(child)) {
    const BQString* id = getNodeAttribute(child, namespaces, nullptr, "id");
    if (id != nullptr) BQDictionaryAddValue(anchors_.get(), keyOf(id).get(), child);
  }
}

}  // namespace vx
