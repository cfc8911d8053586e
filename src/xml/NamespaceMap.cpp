#include "xml/NamespaceMap.h"

#include <algorithm>

#include <BQ/BQDictionary.h>

#include "xml/Text.h"

namespace vx {

NamespaceMap::NamespaceMap() : namespaces_(own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys))) {}

void NamespaceMap::addValue(const BQString* prefix, const BQString* namespaceURI) {
  if (prefix == nullptr || namespaceURI == nullptr) return;
  changes_.push_back({retain(prefix), retain(getValue(prefix)), version_});
  version_ = ++lastVersion_;
  longestNamespace_ = std::max(longestNamespace_, textOf(namespaceURI).size());
  BQDictionarySetValue(namespaces_.get(), prefix, namespaceURI);
}

const BQString* NamespaceMap::getValue(const BQString* prefix) const {
  return static_cast<const BQString*>(BQDictionaryGetValue(namespaces_.get(), prefix));
}

void NamespaceMap::restore(size_t count) {
  while (changes_.size() > count) {
    const Change& last = changes_.back();
    if (last.before != nullptr) {
      BQDictionarySetValue(namespaces_.get(), last.prefix.get(), last.before.get());
    } else {
      BQDictionaryRemoveValue(namespaces_.get(), last.prefix.get());
    }
    version_ = last.versionBefore;
    changes_.pop_back();
  }
}

}  // namespace vx
