/* The base of the handles: library objects as objects of the platform layer. */
#ifndef VX_API_C_PLUS_BQ_OBJECT_H
#define VX_API_C_PLUS_BQ_OBJECT_H

#include <BQ/BQRuntime.h>

#include <cstddef>
#include <utility>

#include "values/Owned.h"

namespace vx {

class CPlusBQObject {
 public:
  /* The identifier in the slot; registers the class first if the slot is 0. Any thread. */
  static BQTypeID ensureTypeID(const BQRuntimeClass* runtimeClass, BQTypeID* typeIDSlot);

  /*
   * A platform instance of that class, its header in place already; null if it cannot be made. It is
   * called as a function: a new-expression would begin the life of the object anew, and the compiler
   * might take what is in the header for lost.
   */
  static void* operator new(size_t size, BQTypeID typeID) noexcept;
  /* The memory belongs to the platform. */
  static void operator delete(void*) = delete;
};

/*
 * A handle that owns an object of the library. `Handle` is the class that derives from this one; it
 * names itself in kClassName and describes its instances in _bqCopyDebugDesc.
 */
template <class Handle, class Object>
struct HandleOf : CPlusBQObject {
  /* Takes over the object. The handle is owned by the caller; null, with the object destroyed, if none
   * can be made. */
  static Handle* wrap(Object* object) {
    auto* handle = static_cast<Handle*>(CPlusBQObject::operator new(sizeof(Handle), typeID()));
    if (handle == nullptr) {
      delete object;
      return nullptr;
    }
    handle->wrapped = object;
    object->setOwner(handle);
    return handle;
  }

  static BQTypeID typeID() { return ensureTypeID(&sRT, &sID); }

  BQRuntimeBase header;
  /* Null while the handle is being finalised. */
  Object* wrapped;

 private:
  static void _bqDealloc(const void* instance) {
    auto* handle = static_cast<Handle*>(const_cast<void*>(instance));
    /* The functions of the caller's that are called now find a handle without an object. */
    Object* object = std::exchange(handle->wrapped, nullptr);
    object->setOwner(nullptr);
    delete object;
  }

  static inline const BQRuntimeClass sRT = {
      0,       Handle::kClassName,      nullptr, nullptr, _bqDealloc, nullptr, nullptr,
      nullptr, Handle::_bqCopyDebugDesc};
  static inline BQTypeID sID = 0;
};

/*
 * The object of a handle for the time that a function of the interface works on it: a function of the
 * caller's may drop the last reference meanwhile. There is none if the handle is null or is being finalised.
 */
template <class Handle>
class InUse {
 public:
  explicit InUse(Handle* handle) : handle_(retain(handle)) {}

  explicit operator bool() const { return handle_ != nullptr && handle_->wrapped != nullptr; }
  auto* operator->() const { return handle_->wrapped; }

 private:
  const Owned<Handle> handle_;
};

}  // namespace vx

#endif
