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

AutoArray::AutoArray() : mutableArray(BQArrayCreateMutable(0)) {}

AutoArray::~AutoArray() {
  BQRelease(immutableArray);
  BQRelease(mutableArray);
}

const BQArray* AutoArray::getImmutableArray() const {
  if (mutableArray != nullptr) return mutableArray;
  return immutableArray != nullptr ? immutableArray : emptyArray();
}

BQArray* AutoArray::getMutableArray() {
  if (mutableArray != nullptr) return mutableArray;
  if (immutableArray != nullptr) {
    mutableArray = BQArrayCreateMutableCopy(0, immutableArray);
    BQRelease(std::exchange(immutableArray, nullptr));
  } else {
    mutableArray = BQArrayCreateMutable(0);
  }
  return mutableArray;
}

BQIndex AutoArray::getCount() const {
  return BQArrayGetCount(getImmutableArray());
}

void AutoArray::appendValue(const void* value) {
  if (value != nullptr) BQArrayAppendValue(getMutableArray(), value);
}

}  // namespace vx
