#include "api/CPlusBQObject.h"

#include <atomic>
#include <mutex>

namespace vx {

// NOLINTNEXTLINE(readability-non-const-parameter): it is written through the atomic reference.
BQTypeID CPlusBQObject::ensureTypeID(const BQRuntimeClass* runtimeClass, BQTypeID* typeIDSlot) {
  const std::atomic_ref<BQTypeID> typeID(*typeIDSlot);
  if (BQTypeID known = typeID.load(std::memory_order_acquire)) return known;
  static std::mutex registration;
  const std::lock_guard lock(registration);
  if (typeID.load(std::memory_order_relaxed) == 0) {
    typeID.store(_BQRuntimeRegisterClass(runtimeClass), std::memory_order_release);
  }
  return typeID.load(std::memory_order_relaxed);
}

void* CPlusBQObject::operator new(size_t size, BQTypeID typeID) noexcept {
  BQTypeRef instance = _BQRuntimeCreateInstance(typeID, static_cast<BQIndex>(size - sizeof(BQRuntimeBase)));
  return const_cast<void*>(instance);
}

}  // namespace vx
