/* The base of the handles: library objects as objects of the platform layer. */
#ifndef VX_API_C_PLUS_BQ_OBJECT_H
#define VX_API_C_PLUS_BQ_OBJECT_H

#include <BQ/BQRuntime.h>

#include <cstddef>

namespace vx {

class CPlusBQObject {
 public:
  /* The identifier in the slot; registers the class first if the slot is 0. */
  static BQTypeID ensureTypeID(const BQRuntimeClass* runtimeClass, BQTypeID* typeIDSlot);

  /* A platform instance of that class; null if it cannot be made. The header is in place already. */
  static void* operator new(size_t size, BQTypeID typeID) noexcept;
  /* The memory belongs to the platform. */
  static void operator delete(void*, BQTypeID) {}
  static void operator delete(void*) = delete;
};

}  // namespace vx

#endif
