#include "api/base/VXSerializerBase.h"

#include <BQ/BQ.h>

#include "values/DictIterator.h"
#include "xml/QualifiedName.h"
#include "xml/TreeAccess.h"

namespace vx {
namespace {

bool isText(const BQString* string, const BQString* text) {
  return string == text || BQStringEqualsIgnoringCase(string, text);
}

}  // namespace

bool wildcardMatches(const BQString* value, const BQString* pattern) {
  if (isText(pattern, BQSTR("")) || isText(pattern, BQSTR("*"))) return true;
  return pattern == value || BQStringEqualsIgnoringCase(pattern, value);
}

VXSerializerBase::VXSerializerBase()
    : properties_(BQDictionaryCreateMutable(0, kBQDictionaryCopyStringKeys)) {}

VXSerializerBase::~VXSerializerBase() {
  parentSerializer_ = nullptr;
  for (SerializationOverride& entry : serializationOverrides_) releaseContext(&entry.context);
  for (DeserializationOverride& entry : deserializationOverrides_) releaseContext(&entry.context);
}

void VXSerializerBase::setProperty(const BQString* key, const void* value) {
  if (value != nullptr) {
    BQDictionarySetValue(properties_.get(), key, value);
  } else {
    BQDictionaryRemoveValue(properties_.get(), key);
  }
}

BQTypeRef VXSerializerBase::getProperty(const BQString* key) {
  BQTypeRef inherited = parentSerializer_ != nullptr ? parentSerializer_->getProperty(key) : nullptr;
  return inherited != nullptr ? inherited : BQDictionaryGetValue(properties_.get(), key);
}

BQTypeRef VXSerializerBase::getPropertyOfType(const BQString* key, BQTypeID typeID) {
  BQTypeRef value = getProperty(key);
  return BQGetTypeID(value) == typeID ? value : nullptr;
}

void VXSerializerBase::addProperties(const BQDictionary* dictionary) {
  for (DictIterator entries(dictionary); entries.hasNext();) {
    BQTypeRef key = entries.nextKey();
    BQDictionaryAddValue(properties_.get(), key, entries.valueFor(key));
  }
}

void VXSerializerBase::addSerializationOverride(BQTypeID typeID, VXSerializeOverrideFunc function,
                                                const VXClientContext* context) {
  /* The caller's retain may register further overrides, which moves the table. */
  VXClientContext retained;
  retainContext(&retained, context);
  serializationOverrides_.push_back({typeID, function, retained});
}

void VXSerializerBase::addDeserializationOverride(const BQString* typeNamespace, const BQString* typeName,
                                                  VXDeserializeOverrideFunc function,
                                                  const VXClientContext* context) {
  VXClientContext retained;
  retainContext(&retained, context);
  deserializationOverrides_.push_back({retain(typeNamespace), retain(typeName), function, retained});
}

bool VXSerializerBase::hasSerializationOverrides() const {
  return !serializationOverrides_.empty() ||
         (parentSerializer_ != nullptr && parentSerializer_->hasSerializationOverrides());
}

bool VXSerializerBase::hasDeserializationOverrides() const {
  return !deserializationOverrides_.empty() ||
         (parentSerializer_ != nullptr && parentSerializer_->hasDeserializationOverrides());
}

const BQString* VXSerializerBase::seriailizeOverride(const void* value) {
  Owned<const BQString> result;
  if (parentSerializer_ != nullptr) result = own(parentSerializer_->seriailizeOverride(value));
  BQTypeID typeID = BQGetTypeID(value);
  for (const SerializationOverride& entry : serializationOverrides_) {
    if (entry.typeID != typeID) continue;
    /* The function may register further overrides, which moves the table. */
    auto [type, function, context] = entry;
    result = own(function == nullptr ? nullptr : function(owner_, value, context.info));
    break;
  }
  return result.release();
}

BQTypeRef VXSerializerBase::deserilizeOverride(const BQTree* tree, const AutoDict& namespaces,
                                               const BQString* typeString, const BQTree* root) {
  if (parentSerializer_ != nullptr) {
    BQTypeRef inherited = parentSerializer_->deserilizeOverride(tree, namespaces, typeString, root);
    if (inherited != nullptr) return inherited;
  }
  if (deserializationOverrides_.empty()) return nullptr;
  const BQString* uri = nullptr;
  const BQString* local = nullptr;
  xmlNamespaceQualify(namespaces, getElementName(tree), &uri, &local);
  auto ownedURI = own(uri);
  auto ownedLocal = own(local);
  for (const DeserializationOverride& entry : deserializationOverrides_) {
    if (!wildcardMatches(uri, entry.typeNamespace.get()) || !wildcardMatches(local, entry.typeName.get()))
      continue;
    return entry.function == nullptr ? nullptr : entry.function(owner_, tree, root, entry.context.info);
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
