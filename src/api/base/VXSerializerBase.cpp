#include "api/base/VXSerializerBase.h"

#include <BQ/BQ.h>

#include "values/DictIterator.h"
#include "xml/QualifiedName.h"
#include "xml/TreeAccess.h"

namespace vx {
namespace {

/* As overrides take it; that of a protocol handler too. */
::OpaqueVXMethodInvocationRef* handleOf(BQTypeRef owner) {
  return static_cast<::OpaqueVXMethodInvocationRef*>(const_cast<void*>(owner));
}

bool isText(const BQString* string, const BQString* text) {
  return string == text || BQStringEqualsIgnoringCase(string, text);
}

}  // namespace

bool wildcardMatches(const BQString* value, const BQString* pattern) {
  if (isText(pattern, BQSTR("")) || isText(pattern, BQSTR("*"))) return true;
  return pattern == value || BQStringEqualsIgnoringCase(pattern, value);
}

VXSerializerBase::VXSerializerBase()
    : properties(own(BQDictionaryCreateMutable(0, kBQDictionaryCopyStringKeys))) {}

VXSerializerBase::~VXSerializerBase() {
  parentSerializer = nullptr;
  for (SerializationOverride& entry : serializationOverrides) releaseContext(&entry.context);
  for (DeserializationOverride& entry : deserializationOverrides) releaseContext(&entry.context);
}

void VXSerializerBase::setProperty(const BQString* key, const void* value) {
  if (value != nullptr) {
    BQDictionarySetValue(properties.get(), key, value);
  } else {
    BQDictionaryRemoveValue(properties.get(), key);
  }
}

BQTypeRef VXSerializerBase::getProperty(const BQString* key) {
  BQTypeRef inherited = parentSerializer != nullptr ? parentSerializer->getProperty(key) : nullptr;
  return inherited != nullptr ? inherited : BQDictionaryGetValue(properties.get(), key);
}

BQTypeRef VXSerializerBase::getPropertyOfType(const BQString* key, BQTypeID typeID) {
  BQTypeRef value = getProperty(key);
  return BQGetTypeID(value) == typeID ? value : nullptr;
}

void VXSerializerBase::addProperties(const BQDictionary* dictionary) {
  for (DictIterator entries(dictionary); entries.hasNext();) {
    BQTypeRef key = entries.nextKey();
    BQDictionaryAddValue(properties.get(), key, entries.valueFor(key));
  }
}

void VXSerializerBase::addSerializationOverride(BQTypeID typeID, VXSerializeOverrideFunc function,
                                                const VXClientContext* context) {
  /* The caller's retain may register further overrides, which moves the table. */
  VXClientContext retained;
  retainContext(&retained, context);
  serializationOverrides.push_back({typeID, function, retained});
}

void VXSerializerBase::addDeserializationOverride(const BQString* typeNamespace, const BQString* typeName,
                                                  VXDeserializeOverrideFunc function,
                                                  const VXClientContext* context) {
  VXClientContext retained;
  retainContext(&retained, context);
  deserializationOverrides.push_back({retain(typeNamespace), retain(typeName), function, retained});
}

bool VXSerializerBase::hasSerializationOverrides() const {
  return !serializationOverrides.empty() ||
         (parentSerializer != nullptr && parentSerializer->hasSerializationOverrides());
}

bool VXSerializerBase::hasDeserializationOverrides() const {
  return !deserializationOverrides.empty() ||
         (parentSerializer != nullptr && parentSerializer->hasDeserializationOverrides());
}

uint64_t VXSerializerBase::countReadingOverrideCalls() const {
  return readingOverrideCalls +
         (parentSerializer != nullptr ? parentSerializer->countReadingOverrideCalls() : 0);
}

const BQString* VXSerializerBase::seriailizeOverride(const void* value) {
  if (value == nullptr) return nullptr;
  Owned<const BQString> result;
  if (parentSerializer != nullptr) result = own(parentSerializer->seriailizeOverride(value));
  BQTypeID typeID = BQGetTypeID(value);
  for (const SerializationOverride& entry : serializationOverrides) {
    if (entry.typeID != typeID) continue;
    /* The function may register further overrides, which moves the table. */
    auto [type, function, context] = entry;
    result = own(function == nullptr ? nullptr : function(handleOf(owner), value, context.info));
    break;
  }
  return result.release();
}

BQTypeRef VXSerializerBase::deserilizeOverride(const BQTree* tree, const NamespaceMap& namespaces,
                                               const BQString* typeString, const BQTree* root) {
  if (parentSerializer != nullptr) {
    BQTypeRef inherited = parentSerializer->deserilizeOverride(tree, namespaces, typeString, root);
    if (inherited != nullptr) return inherited;
  }
  if (deserializationOverrides.empty()) return nullptr;
  const BQString* uri = nullptr;
  const BQString* local = nullptr;
  xmlNamespaceQualify(namespaces, getElementName(tree), &uri, &local);
  auto ownedURI = own(uri);
  auto ownedLocal = own(local);
  for (const DeserializationOverride& entry : deserializationOverrides) {
    if (!wildcardMatches(uri, entry.typeNamespace.get()) || !wildcardMatches(local, entry.typeName.get()))
      continue;
    if (entry.function == nullptr) return nullptr;
    ++readingOverrideCalls;
    return entry.function(handleOf(owner), tree, root, entry.context.info);
  }
  return nullptr;
}

void VXSerializerBase::retainContext(VXClientContext* destination, const VXClientContext* source) {
  *destination = source == nullptr ? VXClientContext{} : *source;
  if (destination->info != nullptr && destination->retain != nullptr) {
    destination->info = destination->retain(destination->info);
  }
}

void VXSerializerBase::releaseContext(VXClientContext* context) {
  VXClientContext dropped = *context;
  *context = {};
  if (dropped.info != nullptr && dropped.release != nullptr) dropped.release(dropped.info);
}

}  // namespace vx
