/* Walks over the keys of a dictionary that it keeps alive. */
#ifndef VX_VALUES_DICT_ITERATOR_H
#define VX_VALUES_DICT_ITERATOR_H

#include "values/AutoDict.h"

namespace vx {

/*
 * The keys are those at the time of construction, in the dictionary's order; values are looked up
 * when they are asked for. Callers loop while `index` is below `count`.
 */
struct DictIterator {
  explicit DictIterator(const BQDictionary* dictionary) { setup(dictionary); }
  explicit DictIterator(const AutoDict& dictionary) { setup(dictionary.getImmutableDict()); }
  ~DictIterator();
  DictIterator(const DictIterator&) = delete;
  DictIterator& operator=(const DictIterator&) = delete;

  bool hasNext() const { return index < count; }
  /* The next key, borrowed. */
  BQTypeRef nextKey() { return keys[index++]; }
  /* The value of a key, borrowed; null for a null key. */
  BQTypeRef valueFor(BQTypeRef key) const;

  int32_t index = 0;
  int32_t count = 0;
  const BQDictionary* dict = nullptr;
  BQTypeRef* keys = nullptr;

 private:
  void setup(const BQDictionary* dictionary);
};

}  // namespace vx

#endif
