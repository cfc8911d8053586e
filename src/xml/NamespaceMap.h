/* The namespaces in force where a document is being read. */
#ifndef VX_XML_NAMESPACE_MAP_H
#define VX_XML_NAMESPACE_MAP_H

#include <BQ/BQBase.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "values/Owned.h"

namespace vx {

/*
 * Leads from prefixes to namespaces; the default namespace stands under "__defaultNamespace". There is
 * one map for a document. What an element declares is taken back when the element was read, so that
 * declarations cost in proportion to their number, however many are in force.
 */
class NamespaceMap {
 public:
  NamespaceMap();

  /* Takes back all that is added while it lives. Scopes end in the reverse order of their beginning. */
  class Scope {
   public:
    explicit Scope(NamespaceMap& map) : map_(map), start_(map.changes_.size()) {}
    ~Scope() { map_.restore(start_); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    NamespaceMap& map_;
    const size_t start_;
  };

  /* A null prefix or namespace is ignored. */
  void addValue(const BQString* prefix, const BQString* namespaceURI);

  /* Borrowed; null if the prefix is not declared. */
  const BQString* getValue(const BQString* prefix) const;

  /* Changes with the content, and comes back with it. */
  uint64_t version() const { return version_; }

  /* The length of the longest namespace that was ever added. */
  size_t longestNamespace() const { return longestNamespace_; }

 private:
  struct Change {
    Owned<const BQString> prefix;
    Owned<const BQString> before; /* null if the prefix was not declared */
    uint64_t versionBefore;
  };

  void restore(size_t count);

  Owned<BQDictionary> namespaces_;
  std::vector<Change> changes_;
  uint64_t version_ = 0;
  uint64_t lastVersion_ = 0;
  size_t longestNamespace_ = 0;
};

}  // namespace vx

#endif
