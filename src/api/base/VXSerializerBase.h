/* What invocations and handlers have in common: properties, overrides, a parent. */
#ifndef VX_API_BASE_VX_SERIALIZER_BASE_H
#define VX_API_BASE_VX_SERIALIZER_BASE_H

#include <BQ/BQBase.h>
#include <VX/VXClientContext.h>
#include <VX/VXOverride.h>

#include <cstdint>
#include <vector>

#include "values/Owned.h"
#include "xml/NamespaceMap.h"

namespace vx {

/* Whether a value matches a pattern without regard to case; "" and "*" match anything, null only null. */
bool wildcardMatches(const BQString* value, const BQString* pattern);

class VXSerializerBase {
 public:
  VXSerializerBase();
  virtual ~VXSerializerBase();
  VXSerializerBase(const VXSerializerBase&) = delete;
  VXSerializerBase& operator=(const VXSerializerBase&) = delete;

  /* Stores a value under a copy of the key; null removes it. */
  virtual void setProperty(const BQString* key, const void* value);
  /* The parent's value, or else the own one; borrowed, may be null. */
  virtual BQTypeRef getProperty(const BQString* key);

  /* The property if it is an instance of the class; borrowed, else null. */
  BQTypeRef getPropertyOfType(const BQString* key, BQTypeID typeID);

  /* Adds the pairs whose keys are not set yet. */
  void addProperties(const BQDictionary* dictionary);

  /* Both append: the first entry that matches is the one that is called. The context may be null. */
  void addSerializationOverride(BQTypeID typeID, VXSerializeOverrideFunc function,
                                const VXClientContext* context);
  void addDeserializationOverride(const BQString* typeNamespace, const BQString* typeName,
                                  VXDeserializeOverrideFunc function, const VXClientContext* context);

  /* Whether any override for writing, or for reading, is registered here or at a parent. */
  bool hasSerializationOverrides() const;
  bool hasDeserializationOverrides() const;

  /* How many functions were called to read an element, here and at a parent. */
  uint64_t countReadingOverrideCalls() const;

  /* The text of the override for a value, owned by the caller, or null. */
  const BQString* seriailizeOverride(const void* value);

  /*
   * The value that an override makes of an element, owned by the caller, or null. The names in
   * force are `namespaces`; `typeString` is handed on to the parent.
   */
  BQTypeRef deserilizeOverride(const BQTree* tree, const NamespaceMap& namespaces, const BQString* typeString,
                               const BQTree* root);

  /* Copies a context and retains its info; a null source gives zeros. */
  static void retainContext(VXClientContext* destination, const VXClientContext* source);
  /* Releases the info and sets the context to zeros. */
  static void releaseContext(VXClientContext* context);

  BQTypeRef getOwner() const { return owner; }
  void setOwner(BQTypeRef handle) { owner = handle; }
  /* The parent is asked first for properties and overrides; it is not owned. */
  void setParentSerializer(VXSerializerBase* parent) { parentSerializer = parent; }

 protected:
  const BQDictionary* getProperties() const { return properties.get(); }

 private:
  struct SerializationOverride {
    BQTypeID typeID;
    VXSerializeOverrideFunc function;
    VXClientContext context;
  };
  struct DeserializationOverride {
    Owned<const BQString> typeNamespace;
    Owned<const BQString> typeName;
    VXDeserializeOverrideFunc function;
    VXClientContext context;
  };

  Owned<BQDictionary> properties;
  std::vector<SerializationOverride> serializationOverrides;
  std::vector<DeserializationOverride> deserializationOverrides;
  uint64_t readingOverrideCalls = 0;
  BQTypeRef owner = nullptr;
  VXSerializerBase* parentSerializer = nullptr;
};

}  // namespace vx

#endif
