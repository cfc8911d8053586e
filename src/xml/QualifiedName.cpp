#include "xml/QualifiedName.h"

#include <string_view>

#include <BQ/BQObject.h>
#include <BQ/BQString.h>

#include "values/Owned.h"
#include "xml/Text.h"

namespace vx {
namespace {

const BQString* retained(BQTypeRef string) {
  return static_cast<const BQString*>(BQRetain(string));
}

const BQString* copyRange(const BQString* string, size_t start, size_t end) {
  return BQStringCreateSubstring(string,
                                 BQRangeMake(static_cast<BQIndex>(start), static_cast<BQIndex>(end - start)));
}

/* Where the separator splits a name; npos if it does not, as at the very start. */
size_t findSeparator(const BQString* name, char separator) {
  size_t position = textOf(name).find(separator);
  return position == 0 ? std::string_view::npos : position;
}

}  // namespace

BQ_DEFINE_STRING(kDefaultNamespaceKey, "__defaultNamespace");

void xmlBurstFullyQualifiedName(const BQString* name, const BQString** outNamespace,
                                const BQString** outLocalName) {
  *outNamespace = nullptr;
  *outLocalName = nullptr;
  size_t bar = findSeparator(name, '|');
  if (bar == std::string_view::npos) {
    *outNamespace = BQSTR("");
    *outLocalName = retained(name);
  } else {
    *outNamespace = copyRange(name, 0, bar);
    *outLocalName = copyRange(name, bar + 1, textOf(name).size());
  }
}

void xmlNamespaceQualify(const NamespaceMap& namespaces, const BQString* qualifiedName,
                         const BQString** outNamespace, const BQString** outLocalName) {
  *outNamespace = nullptr;
  *outLocalName = nullptr;
  size_t colon = findSeparator(qualifiedName, ':');
  if (colon == std::string_view::npos) {
    *outNamespace = retained(namespaces.getValue(kDefaultNamespaceKey));
    *outLocalName = retained(qualifiedName);
    return;
  }
  auto prefix = own(copyRange(qualifiedName, 0, colon));
  *outNamespace = retained(namespaces.getValue(prefix.get()));
  *outLocalName = copyRange(qualifiedName, colon + 1, textOf(qualifiedName).size());
}

void fullyQualify(AutoString& name, const NamespaceMap& namespaces) {
  if (name.isEmpty()) return;
  const BQString* uri = nullptr;
  const BQString* local = nullptr;
  xmlNamespaceQualify(namespaces, name.get(), &uri, &local);
  auto ownedURI = own(uri);
  auto ownedLocal = own(local);
  if (uri == nullptr || local == nullptr) return;
  name.setString(own(BQStringCreateWithFormat(BQSTR("%@|%@"), uri, local)).get());
}

}  // namespace vx
