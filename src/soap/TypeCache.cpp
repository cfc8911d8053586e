#include "soap/TypeCache.h"

#include <BQ/BQObject.h>
#include <BQ/BQString.h>

#include "xml/Kinds.h"
#include "xml/QualifiedName.h"
#include "xml/Text.h"

namespace vx {
namespace {

VXTypeID resolve(const BQString* typeName, const NamespaceMap& namespaces) {
  AutoString name(static_cast<const BQString*>(BQRetain(typeName)));
  fullyQualify(name, namespaces);
  const BQString* uri = nullptr;
  const BQString* local = nullptr;
  xmlBurstFullyQualifiedName(name.get(), &uri, &local);
  auto ownedURI = own(uri);
  auto ownedLocal = own(local);
  return VXQualifiedtoVXType(uri, local);
}

}  // namespace

VXTypeID TypeCache::kindOf(const BQString* typeName, const NamespaceMap& namespaces) {
  for (const Entry& entry : entries_) {
    if (entry.typeName == nullptr || entry.version != namespaces.version()) continue;
    if (entry.typeName.get() == typeName || textOf(entry.typeName.get()) == textOf(typeName))
      return entry.kind;
  }
  Entry& entry = entries_[next_++ % kSize];
  entry = {retain(typeName), namespaces.version(), resolve(typeName, namespaces)};
  return entry.kind;
}

}  // namespace vx
