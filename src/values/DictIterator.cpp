#include "values/DictIterator.h"

#include <new>

#include <BQ/BQDictionary.h>
#include <BQ/BQObject.h>

namespace vx {

void DictIterator::setup(const BQDictionary* dictionary) {
  dict = static_cast<const BQDictionary*>(BQRetain(dictionary));
  count = static_cast<int32_t>(BQDictionaryGetCount(dictionary));
  if (count == 0) return;
  keys = new (std::nothrow) BQTypeRef[static_cast<size_t>(count)];
  if (keys == nullptr) {
    count = 0;
  } else {
    BQDictionaryGetKeysAndValues(dictionary, keys, nullptr);
  }
}

DictIterator::~DictIterator() {
  delete[] keys;
  BQRelease(dict);
}

BQTypeRef DictIterator::valueFor(BQTypeRef key) const {
  return BQDictionaryGetValue(dict, key);
}

}  // namespace vx
