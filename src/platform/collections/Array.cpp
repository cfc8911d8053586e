#include <BQ/BQArray.h>

#include <cstdlib>
#include <cstring>

#include <algorithm>
#include <utility>

#include "platform/collections/ContainerComparison.h"
#include "platform/object/Classes.h"
#include "platform/object/Object.h"

/* `values` lie right behind an immutable array and in memory of their own for a mutable one. */
struct BQArray {
  BQRuntimeBase base;
  uint64_t count;
  BQTypeRef* values;
};

namespace bq {
namespace {

constexpr uint16_t kMutable = kClassFlag;
constexpr uint64_t kSmallestCapacity = 4;
/* No memory holds more; beyond, the size of an array would overflow. */
constexpr BQIndex kMaximumCount = PTRDIFF_MAX / 16;

struct MutableArray : BQArray {
  uint64_t capacity;
};

const BQArray* asArray(BQTypeRef object) {
  return static_cast<const BQArray*>(object);
}
bool isArray(BQTypeRef object) {
  return isInstance(object, kArrayTypeID);
}

MutableArray* asMutable(BQArray* array) {
  bool isMutable = isArray(array) && (array->base.flags & kMutable) != 0;
  return isMutable ? static_cast<MutableArray*>(array) : nullptr;
}

/* The slot at an index; null if it is out of range. */
BQTypeRef* slotAt(MutableArray* array, BQIndex index) {
  bool inRange = array != nullptr && index >= 0 && static_cast<uint64_t>(index) < array->count;
  return inRange ? array->values + index : nullptr;
}

bool equalValues(BQTypeRef first, BQTypeRef second) {
  const BQArray *left = asArray(first), *right = asArray(second);
  for (uint64_t i = 0; i < left->count; ++i) {
    if (!BQEqual(left->values[i], right->values[i])) return false;
  }
  return true;
}

bool equalArrays(BQTypeRef first, BQTypeRef second) {
  return asArray(first)->count == asArray(second)->count && compareContainers(first, second, equalValues);
}

BQHashCode hashArray(BQTypeRef object) {
  return asArray(object)->count;
}

void releaseValues(const BQArray* array) {
  for (uint64_t i = 0; i < array->count; ++i) BQRelease(array->values[i]);
}

void finalizeArray(BQTypeRef object) {
  const BQArray* array = asArray(object);
  releaseValues(array);
  if ((array->base.flags & kMutable) != 0) std::free(array->values);
}

MutableArray* makeMutable(uint64_t capacity) {
  auto* values = capacity == 0 ? nullptr : static_cast<BQTypeRef*>(allocate(capacity * sizeof(BQTypeRef)));
  return new (allocate(sizeof(MutableArray)))
      MutableArray{{{kArrayTypeID, kMutable, 1}, 0, values}, capacity};
}

/* Room for one more value. */
void grow(MutableArray* array) {
  if (array->count < array->capacity) return;
  array->capacity = std::max(2 * array->capacity, kSmallestCapacity);
  array->values = static_cast<BQTypeRef*>(reallocate(array->values, array->capacity * sizeof(BQTypeRef)));
}

void appendRetained(MutableArray* array, const BQTypeRef* values, uint64_t count) {
  for (uint64_t i = 0; i < count; ++i) array->values[array->count++] = BQRetain(values[i]);
}

}  // namespace

const BQRuntimeClass kArrayClass = {0,           "BQArray", nullptr, nullptr, finalizeArray,
                                    equalArrays, hashArray, nullptr, nullptr};

}  // namespace bq

using bq::isArray;
using bq::MutableArray;

BQTypeID BQArrayGetTypeID(void) {
  return bq::kArrayTypeID;
}

const BQArray* BQArrayCreate(const BQTypeRef* values, BQIndex count) {
  if (count < 0 || count > bq::kMaximumCount || (values == nullptr && count > 0)) return nullptr;
  auto size = static_cast<uint64_t>(count);
  void* memory = bq::allocate(sizeof(BQArray) + size * sizeof(BQTypeRef));
  auto* inside = reinterpret_cast<BQTypeRef*>(static_cast<char*>(memory) + sizeof(BQArray));
  for (uint64_t i = 0; i < size; ++i) inside[i] = BQRetain(values[i]);
  return new (memory) BQArray{{bq::kArrayTypeID, 0, 1}, size, inside};
}

const BQArray* BQArrayCreateCopy(const BQArray* array) {
  if (!isArray(array)) return nullptr;
  if ((array->base.flags & bq::kMutable) == 0) return static_cast<const BQArray*>(BQRetain(array));
  return BQArrayCreate(array->values, static_cast<BQIndex>(array->count));
}

BQArray* BQArrayCreateMutable(BQIndex capacity) {
  return bq::makeMutable(bq::capacityHint(capacity));
}

BQArray* BQArrayCreateMutableCopy(BQIndex capacity, const BQArray* array) {
  if (!isArray(array)) return nullptr;
  uint64_t room = bq::capacityHint(capacity);
  MutableArray* copy = bq::makeMutable(room > array->count ? room : array->count);
  bq::appendRetained(copy, array->values, array->count);
  return copy;
}

BQIndex BQArrayGetCount(const BQArray* array) {
  return isArray(array) ? static_cast<BQIndex>(array->count) : 0;
}

BQTypeRef BQArrayGetValueAtIndex(const BQArray* array, BQIndex index) {
  bool inRange = isArray(array) && index >= 0 && static_cast<uint64_t>(index) < array->count;
  return inRange ? array->values[index] : nullptr;
}

bool BQArrayContainsValue(const BQArray* array, BQTypeRef value) {
  for (BQIndex i = 0; i < BQArrayGetCount(array); ++i) {
    if (BQEqual(array->values[i], value)) return true;
  }
  return false;
}

void BQArrayAppendValue(BQArray* array, BQTypeRef value) {
  if (bq::asMutable(array) != nullptr) BQArrayAppendOwnedValue(array, BQRetain(value));
}

void BQArrayAppendOwnedValue(BQArray* array, BQTypeRef value) {
  MutableArray* target = bq::asMutable(array);
  if (target == nullptr) return BQRelease(value);
  bq::grow(target);
  target->values[target->count++] = value;
}

void BQArrayInsertValueAtIndex(BQArray* array, BQIndex index, BQTypeRef value) {
  MutableArray* target = bq::asMutable(array);
  if (target == nullptr || index < 0 || static_cast<uint64_t>(index) > target->count) return;
  bq::grow(target);
  BQTypeRef* slot = target->values + index;
  std::memmove(slot + 1, slot, (target->count - static_cast<uint64_t>(index)) * sizeof(BQTypeRef));
  *slot = BQRetain(value);
  ++target->count;
}

void BQArraySetValueAtIndex(BQArray* array, BQIndex index, BQTypeRef value) {
  BQTypeRef* slot = bq::slotAt(bq::asMutable(array), index);
  if (slot == nullptr) return;
  BQTypeRef old = *slot;
  *slot = BQRetain(value);
  BQRelease(old);
}

void BQArrayRemoveValueAtIndex(BQArray* array, BQIndex index) {
  MutableArray* target = bq::asMutable(array);
  BQTypeRef* slot = bq::slotAt(target, index);
  if (slot == nullptr) return;
  BQTypeRef old = *slot;
  --target->count;
  std::memmove(slot, slot + 1, (target->count - static_cast<uint64_t>(index)) * sizeof(BQTypeRef));
  BQRelease(old);
}

void BQArrayRemoveAllValues(BQArray* array) {
  MutableArray* target = bq::asMutable(array);
  if (target == nullptr) return;
  /* What goes may look at the array, or put something into it. */
  BQTypeRef* values = std::exchange(target->values, nullptr);
  uint64_t count = std::exchange(target->count, 0);
  target->capacity = 0;
  for (uint64_t i = 0; i < count; ++i) BQRelease(values[i]);
  std::free(values);
}
