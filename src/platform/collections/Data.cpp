#include <BQ/BQData.h>

#include <cstdlib>
#include <cstring>

#include "platform/object/Classes.h"
#include "platform/object/Object.h"

/* `bytes` lie right behind the object, in memory of their own, or in somebody else's memory. */
struct BQData {
  BQRuntimeBase base;
  uint64_t length;
  uint8_t* bytes;
};

namespace bq {
namespace {

constexpr uint16_t kMutable = kClassFlag;
constexpr uint16_t kOwnsBytes = kClassFlag << 1;
constexpr uint16_t kBorrowsBytes = kClassFlag << 2;

struct MutableData : BQData {
  uint64_t capacity;
};

const BQData* asData(BQTypeRef object) {
  return static_cast<const BQData*>(object);
}

MutableData* asMutable(BQData* data) {
  bool isMutable = isInstance(data, kDataTypeID) && (data->base.flags & kMutable) != 0;
  return isMutable ? static_cast<MutableData*>(data) : nullptr;
}

bool equalData(BQTypeRef first, BQTypeRef second) {
  const BQData *left = asData(first), *right = asData(second);
  return left->length == right->length &&
         (left->length == 0 || std::memcmp(left->bytes, right->bytes, left->length) == 0);
}

/* The length and the first bytes tell most data apart. */
BQHashCode hashData(BQTypeRef object) {
  const BQData* data = asData(object);
  BQHashCode hash = data->length;
  for (uint64_t i = 0; i < data->length && i < 64; ++i) hash = hash * 31 + data->bytes[i];
  return hash;
}

void finalizeData(BQTypeRef object) {
  if ((asData(object)->base.flags & kOwnsBytes) != 0) std::free(asData(object)->bytes);
}

const BQData* makeOutside(const void* bytes, BQIndex length, uint16_t flags) {
  auto* memory = static_cast<uint8_t*>(const_cast<void*>(bytes));
  return new (allocate(sizeof(BQData)))
      BQData{{kDataTypeID, flags, 1}, static_cast<uint64_t>(length), memory};
}

void ensureCapacity(MutableData* data, uint64_t capacity) {
  if (capacity <= data->capacity) return;
  uint64_t grown = data->capacity + data->capacity / 2;
  data->capacity = capacity > grown ? capacity : grown;
  data->bytes = static_cast<uint8_t*>(reallocate(data->bytes, data->capacity));
}

/* Makes room for bytes, which may be some of the data itself, and gives where they then stand. */
const uint8_t* growFor(MutableData* data, const uint8_t* bytes, uint64_t size) {
  auto offset = reinterpret_cast<uintptr_t>(bytes) - reinterpret_cast<uintptr_t>(data->bytes);
  bool isInside = offset < data->capacity;
  ensureCapacity(data, data->length + size);
  return isInside ? data->bytes + offset : bytes;
}

bool isUsable(const void* bytes, BQIndex length) {
  return length >= 0 && (bytes != nullptr || length == 0);
}

}  // namespace

const BQRuntimeClass kDataClass = {0,         "BQData", nullptr, nullptr, finalizeData,
                                   equalData, hashData, nullptr, nullptr};

}  // namespace bq

using bq::MutableData;

BQTypeID BQDataGetTypeID(void) {
  return bq::kDataTypeID;
}

const BQData* BQDataCreate(const void* bytes, BQIndex length) {
  if (!bq::isUsable(bytes, length)) return nullptr;
  auto size = static_cast<size_t>(length);
  void* memory = bq::allocate(sizeof(BQData) + size);
  auto* inside = static_cast<uint8_t*>(memory) + sizeof(BQData);
  if (size > 0) std::memcpy(inside, bytes, size);
  return new (memory) BQData{{bq::kDataTypeID, 0, 1}, size, inside};
}

const BQData* BQDataCreateView(const void* bytes, BQIndex length) {
  return bq::isUsable(bytes, length) ? bq::makeOutside(bytes, length, bq::kBorrowsBytes) : nullptr;
}

const BQData* BQDataCreateWithOwnedBytes(void* bytes, BQIndex length) {
  return bq::isUsable(bytes, length) ? bq::makeOutside(bytes, length, bq::kOwnsBytes) : nullptr;
}

const BQData* BQDataCreateCopy(const BQData* data) {
  if (!bq::isInstance(data, bq::kDataTypeID)) return nullptr;
  bool sharable = (data->base.flags & (bq::kMutable | bq::kBorrowsBytes)) == 0;
  return sharable ? static_cast<const BQData*>(BQRetain(data))
                  : BQDataCreate(data->bytes, static_cast<BQIndex>(data->length));
}

BQData* BQDataCreateMutable(BQIndex capacity) {
  uint64_t room = bq::capacityHint(capacity < 16 ? 16 : capacity);
  auto* bytes = static_cast<uint8_t*>(bq::allocate(room));
  BQRuntimeBase base = {bq::kDataTypeID, bq::kMutable | bq::kOwnsBytes, 1};
  return new (bq::allocate(sizeof(MutableData))) MutableData{{base, 0, bytes}, room};
}

BQData* BQDataCreateMutableCopy(const BQData* data) {
  if (!bq::isInstance(data, bq::kDataTypeID)) return nullptr;
  BQData* copy = BQDataCreateMutable(static_cast<BQIndex>(data->length));
  BQDataAppendBytes(copy, data->bytes, static_cast<BQIndex>(data->length));
  return copy;
}

BQIndex BQDataGetLength(const BQData* data) {
  return bq::isInstance(data, bq::kDataTypeID) ? static_cast<BQIndex>(data->length) : 0;
}

const uint8_t* BQDataGetBytePtr(const BQData* data) {
  static const uint8_t nothing = 0;
  if (!bq::isInstance(data, bq::kDataTypeID)) return nullptr;
  return data->bytes != nullptr ? data->bytes : &nothing;
}

uint8_t* BQDataGetMutableBytePtr(BQData* data) {
  MutableData* target = bq::asMutable(data);
  return target == nullptr ? nullptr : target->bytes;
}

void BQDataAppendBytes(BQData* data, const void* bytes, BQIndex length) {
  MutableData* target = bq::asMutable(data);
  if (target == nullptr || bytes == nullptr || length <= 0) return;
  auto size = static_cast<uint64_t>(length);
  const uint8_t* source = bq::growFor(target, static_cast<const uint8_t*>(bytes), size);
  std::memmove(target->bytes + target->length, source, size);
  target->length += size;
}

void BQDataSetLength(BQData* data, BQIndex length) {
  MutableData* target = bq::asMutable(data);
  if (target == nullptr || length < 0) return;
  auto size = static_cast<uint64_t>(length);
  bq::ensureCapacity(target, size);
  if (size > target->length) std::memset(target->bytes + target->length, 0, size - target->length);
  target->length = size;
}
