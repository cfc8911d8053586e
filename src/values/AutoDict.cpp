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
    : immutableDict(static_cast<const BQDictionary*>(BQRetain(dictionary))) {}

AutoDict::AutoDict(const AutoDict& other) : AutoDict(other.getImmutableDict()) {}

AutoDict::~AutoDict() {
  BQRelease(immutableDict);
  BQRelease(mutableDict);
}

const BQDictionary* AutoDict::getImmutableDict() const {
  if (mutableDict != nullptr) return mutableDict;
  return immutableDict != nullptr ? immutableDict : emptyDictionary();
}

BQDictionary* AutoDict::getMutableDict() {
  if (mutableDict != nullptr) return mutableDict;
  if (immutableDict != nullptr) {
    mutableDict = BQDictionaryCreateMutableCopy(0, immutableDict);
    BQRelease(std::exchange(immutableDict, nullptr));
  } else {
    mutableDict = BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys);
  }
  return mutableDict;
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
