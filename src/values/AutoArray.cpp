#include "values/AutoArray.h"

#include <utility>

#include <BQ/BQArray.h>
#include <BQ/BQObject.h>

namespace vx {

BQArray* AutoArray::sEmptyArray;

const BQArray* AutoArray::emptyArray() {
  static const bool made = (sEmptyArray = BQArrayCreateMutable(0), true);
  static_cast<void>(made);
  return sEmptyArray;
}

AutoArray::AutoArray() : mutableArray_(BQArrayCreateMutable(0)) {}

AutoArray::~AutoArray() {
  BQRelease(immutableArray_);
  BQRelease(mutableArray_);
}

const BQArray* AutoArray::getImmutableArray() const {
  if (mutableArray_ != nullptr) return mutableArray_;
  return immutableArray_ != nullptr ? immutableArray_ : emptyArray();
}

BQArray* AutoArray::getMutableArray() {
  if (mutableArray_ != nullptr) return mutableArray_;
  if (immutableArray_ != nullptr) {
    mutableArray_ = BQArrayCreateMutableCopy(0, immutableArray_);
    BQRelease(std::exchange(immutableArray_, nullptr));
  } else {
    mutableArray_ = BQArrayCreateMutable(0);
  }
  return mutableArray_;
}

BQIndex AutoArray::getCount() const {
  return BQArrayGetCount(getImmutableArray());
}

void AutoArray::appendValue(const void* value) {
  if (value != nullptr) BQArrayAppendValue(getMutableArray(), value);
}

}  // namespace vx
