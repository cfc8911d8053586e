#include "values/AutoDict.h"

#include <utility>

#include <BQ/BQDictionary.h>
#include <BQ/BQObject.h>

namespace vx {

BQDictionary* AutoDict::sEmptyDictionary;

const BQDictionary* AutoDict::emptyDictionary() {
  static const bool made = (sEmptyDictionary = BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys), true);
  static_cast<void>(made);
  return sEmptyDictionary;
}

AutoDict::AutoDict(const BQDictionary* dictionary)
    : immutableDict_(static_cast<const BQDictionary*>(BQRetain(dictionary))) {}

AutoDict::AutoDict(const AutoDict& other) : AutoDict(other.getImmutableDict()) {}

AutoDict::~AutoDict() {
  BQRelease(immutableDict_);
  BQRelease(mutableDict_);
}

const BQDictionary* AutoDict::getImmutableDict() const {
  if (mutableDict_ != nullptr) return mutableDict_;
  return immutableDict_ != nullptr ? immutableDict_ : emptyDictionary();
}

BQDictionary* AutoDict::getMutableDict() {
  if (mutableDict_ != nullptr) return mutableDict_;
  if (immutableDict_ != nullptr) {
    mutableDict_ = BQDictionaryCreateMutableCopy(0, immutableDict_);
    BQRelease(std::exchange(immutableDict_, nullptr));
  } else {
    mutableDict_ = BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys);
  }
  return mutableDict_;
}

const BQDictionary* AutoDict::copyDict() const {
  return static_cast<const BQDictionary*>(BQRetain(getImmutableDict()));
}

void AutoDict::addValue(const BQString* key, const void* value) {
  if (value != nullptr) BQDictionarySetValue(getMutableDict(), key, value);
}

BQTypeRef AutoDict::getValue(const BQString* key) const {
  return BQDictionaryGetValue(getImmutableDict(), key);
}

BQIndex AutoDict::getCount() const {
  return BQDictionaryGetCount(getImmutableDict());
}

}  // namespace vx
