#include "api/CPlusBQObject.h"

namespace vx {

BQTypeID CPlusBQObject::ensureTypeID(const BQRuntimeClass* runtimeClass, BQTypeID* typeIDSlot) {
  if (*typeIDSlot == 0) *typeIDSlot = _BQRuntimeRegisterClass(runtimeClass);
  return *typeIDSlot;
}

void* CPlusBQObject::operator new(size_t size, BQTypeID typeID) noexcept {
  BQTypeRef instance = _BQRuntimeCreateInstance(typeID, static_cast<BQIndex>(size - sizeof(BQRuntimeBase)));
  return const_cast<void*>(instance);
}

}  // namespace vx
