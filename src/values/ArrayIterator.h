/* Walks over an array that it keeps alive. */
#ifndef VX_VALUES_ARRAY_ITERATOR_H
#define VX_VALUES_ARRAY_ITERATOR_H

#include <BQ/BQArray.h>
#include <BQ/BQObject.h>

#include "values/AutoArray.h"

namespace vx {

/* Callers advance `index` themselves while it is below `count`. */
struct ArrayIterator {
  explicit ArrayIterator(const BQArray* walked)
      : count(static_cast<int32_t>(BQArrayGetCount(walked))),
        array(static_cast<const BQArray*>(BQRetain(walked))) {}
  explicit ArrayIterator(const AutoArray& walked) : ArrayIterator(walked.getImmutableArray()) {}
  ~ArrayIterator() { BQRelease(array); }
  ArrayIterator(const ArrayIterator&) = delete;
  ArrayIterator& operator=(const ArrayIterator&) = delete;

  bool hasNext() const { return index < count; }
  BQTypeRef next() { return BQArrayGetValueAtIndex(array, index++); }

  int32_t index = 0;
  const int32_t count;
  const BQArray* const array;
};

}  // namespace vx

#endif
