/* What the classes of the platform layer share: identifiers, allocation, owned references. */
#ifndef BQ_OBJECT_OBJECT_H
#define BQ_OBJECT_OBJECT_H

#include <BQ/BQRef.h>
#include <BQ/BQRuntime.h>

#include <new>
#include <utility>

namespace bq {

/* Classes whose instances exist at compile time have fixed identifiers; the others register. */
enum FixedTypeID : BQTypeID {
  kStringTypeID = kBQRuntimeStringTypeID,
  kNullTypeID,
  kBooleanTypeID,
  kNumberTypeID,
  kDateTypeID,
  kDataTypeID,
  kArrayTypeID,
  kDictionaryTypeID,
  kFixedTypeCount
};

/* Flags of BQRuntimeBase; the bits from kClassFlag on belong to each class. */
inline constexpr uint16_t kImmortal = kBQRuntimeImmortal;
inline constexpr uint16_t kInArena = 0x2;
inline constexpr uint16_t kClassFlag = 0x100;

/*
 * Added to the type of an object that is being finalised. A function of the program that is called meanwhile
 * may still have a pointer to the object: to the functions of its class it no longer is an instance, so that
 * none of them can keep it, and its references are not counted.
 */
inline constexpr uint16_t kFinalizing = 0x8000;

/* The depth to which nested containers are compared and described. */
inline constexpr int kMaximumDepth = 512;

/* Memory of the one allocator. Running out ends the process with a message. */
void* allocate(size_t size);
void* reallocate(void* memory, size_t size);
[[noreturn]] void failAllocation(size_t size);

/* The room that a caller's wish for capacity gets: a hint, so that nonsense does no harm. */
inline size_t capacityHint(BQIndex capacity) {
  constexpr BQIndex kMost = BQIndex{1} << 24;
  return static_cast<size_t>(capacity < 0 ? 0 : capacity > kMost ? kMost : capacity);
}

/* The base of every object that is a C++ class. */
struct Object {
  BQRuntimeBase base;

  explicit Object(BQTypeID typeID) : base{static_cast<uint16_t>(typeID), 0, 1} {}
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;

  bool hasFlag(uint16_t flag) const { return (base.flags & flag) != 0; }
};

/* A new object with one reference. Its class' finaliser must be finalizeObject<T>. */
template <class T, class... Arguments>
T* makeObject(BQTypeID typeID, Arguments&&... arguments) {
  return new (allocate(sizeof(T))) T(typeID, std::forward<Arguments>(arguments)...);
}

/* The finaliser of a class T; the runtime frees the memory. */
template <class T>
void finalizeObject(BQTypeRef object) {
  static_cast<const T*>(object)->~T();
}

inline const BQRuntimeBase* baseOf(BQTypeRef object) {
  return static_cast<const BQRuntimeBase*>(object);
}

/* The class, also of an object that is being finalised. */
inline BQTypeID typeIDOf(BQTypeRef object) {
  return static_cast<BQTypeID>(baseOf(object)->typeID & ~kFinalizing);
}

inline bool isInstance(BQTypeRef object, BQTypeID typeID) {
  return object != nullptr && baseOf(object)->typeID == typeID;
}

template <class T>
using Ref = BQRef<T>;

}  // namespace bq

#endif
