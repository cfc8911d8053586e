#include <BQ/BQRuntime.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/single_threaded.h>

#include <array>
#include <atomic>
#include <vector>

#include <BQ/BQObject.h>
#include <BQ/BQString.h>

#include "platform/object/Arena.h"
#include "platform/object/Classes.h"
#include "platform/object/Object.h"

namespace bq {
namespace {

constexpr BQTypeID kMaximumTypes = 1024;

/* Registration publishes the record before its identifier, so that readers need no lock. */
std::array<std::atomic<const BQRuntimeClass*>, kMaximumTypes> registeredClasses;
std::atomic<BQTypeID> nextTypeID{kFixedTypeCount};

constexpr std::array<const BQRuntimeClass*, kFixedTypeCount> kFixedClasses = {
    nullptr,     &kStringClass, &kNullClass,  &kBooleanClass,    &kNumberClass,
    &kDateClass, &kDataClass,   &kArrayClass, &kDictionaryClass,
};

BQRuntimeBase* mutableBase(BQTypeRef object) {
  return const_cast<BQRuntimeBase*>(baseOf(object));
}

/* The number of references before the change. */
uint32_t addReference(BQRuntimeBase* base) {
  if (__libc_single_threaded) return base->retainCount++;
  return __atomic_fetch_add(&base->retainCount, 1, __ATOMIC_RELAXED);
}

uint32_t dropReference(BQRuntimeBase* base) {
  if (__libc_single_threaded) return base->retainCount--;
  return __atomic_fetch_sub(&base->retainCount, 1, __ATOMIC_ACQ_REL);
}

void markFinalizing(BQTypeRef object) {
  BQRuntimeBase* base = mutableBase(object);
  base->typeID |= kFinalizing;
  base->flags |= kImmortal;
}

void destroyNow(BQTypeRef object, const BQRuntimeClass* runtimeClass) {
  runtimeClass->finalize(object);
  std::free(const_cast<void*>(object));
}

/*
 * Destroying a container destroys what it holds, and so on. Past a few levels the objects wait in a
 * list for the outermost destruction, so that nesting of any depth needs little stack.
 */
class Destruction {
 public:
  static void run(BQTypeRef object, const BQRuntimeClass* runtimeClass) {
    State& state = state_;
    if (state.depth == kMaximumNesting) {
      if (state.waiting == nullptr) state.waiting = new std::vector<BQTypeRef>;
      state.waiting->push_back(object);
      return;
    }
    ++state.depth;
    destroyNow(object, runtimeClass);
    if (--state.depth == 0 && state.waiting != nullptr) drain(state);
  }

 private:
  static constexpr int kMaximumNesting = 32;
  struct State {
    int depth;
    std::vector<BQTypeRef>* waiting;
  };
  static inline thread_local State state_{0, nullptr};

  static void drain(State& state) {
    std::vector<BQTypeRef>* waiting = state.waiting;
    ++state.depth;
    while (!waiting->empty()) {
      BQTypeRef object = waiting->back();
      waiting->pop_back();
      destroyNow(object, classOf(typeIDOf(object)));
    }
    --state.depth;
    state.waiting = nullptr;
    delete waiting;
  }
};

void destroy(BQTypeRef object) {
  const BQRuntimeClass* runtimeClass = classOf(baseOf(object)->typeID);
  if (runtimeClass == nullptr || runtimeClass->finalize == nullptr) {
    std::free(const_cast<void*>(object));
  } else if (baseOf(object)->typeID == kStringTypeID) {
    destroyNow(object, runtimeClass);
  } else {
    markFinalizing(object);
    Destruction::run(object, runtimeClass);
  }
}

}  // namespace

const BQRuntimeClass* classOf(BQTypeID typeID) {
  if (typeID < kFixedTypeCount) return kFixedClasses[typeID];
  if (typeID >= kMaximumTypes) return nullptr;
  return registeredClasses[typeID].load(std::memory_order_acquire);
}

void failAllocation(size_t size) {
  std::fprintf(stderr, "BQ: out of memory (%zu bytes)\n", size);
  std::abort();
}

void* allocate(size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) failAllocation(size);
  return memory;
}

void* reallocate(void* memory, size_t size) {
  void* result = std::realloc(memory, size);
  if (result == nullptr) failAllocation(size);
  return result;
}

}  // namespace bq

using bq::Arena;
using bq::baseOf;

BQTypeID _BQRuntimeRegisterClass(const BQRuntimeClass* runtimeClass) {
  if (runtimeClass == nullptr || runtimeClass->className == nullptr) return 0;
  BQTypeID typeID = bq::nextTypeID.load();
  do {
    if (typeID == bq::kMaximumTypes) return 0;
  } while (!bq::nextTypeID.compare_exchange_weak(typeID, typeID + 1));
  bq::registeredClasses[typeID].store(runtimeClass, std::memory_order_release);
  return typeID;
}

BQTypeRef _BQRuntimeCreateInstance(BQTypeID typeID, BQIndex extraBytes) {
  const BQRuntimeClass* runtimeClass = bq::classOf(typeID);
  if (runtimeClass == nullptr || typeID < bq::kFixedTypeCount || extraBytes < 0) return nullptr;
  void* memory = std::calloc(1, sizeof(BQRuntimeBase) + static_cast<size_t>(extraBytes));
  if (memory == nullptr) return nullptr;
  new (memory) BQRuntimeBase{static_cast<uint16_t>(typeID), 0, 1};
  if (runtimeClass->init != nullptr) runtimeClass->init(memory);
  return memory;
}

BQTypeRef BQRetain(BQTypeRef object) {
  if (object == nullptr) return nullptr;
  BQRuntimeBase* base = bq::mutableBase(object);
  if ((base->flags & (bq::kImmortal | bq::kInArena)) == 0) {
    bq::addReference(base);
  } else if ((base->flags & bq::kInArena) != 0) {
    Arena::of(object)->retain();
  }
  return object;
}

void BQRelease(BQTypeRef object) {
  if (object == nullptr) return;
  BQRuntimeBase* base = bq::mutableBase(object);
  if ((base->flags & (bq::kImmortal | bq::kInArena)) == 0) {
    if (bq::dropReference(base) == 1) bq::destroy(object);
  } else if ((base->flags & bq::kInArena) != 0) {
    Arena::of(object)->release();
  }
}

BQIndex BQGetRetainCount(BQTypeRef object) {
  if (object == nullptr) return 0;
  const BQRuntimeBase* base = baseOf(object);
  if ((base->flags & bq::kInArena) != 0) return Arena::of(object)->retainCount();
  return __atomic_load_n(&base->retainCount, __ATOMIC_RELAXED);
}

BQTypeID BQGetTypeID(BQTypeRef object) {
  return object == nullptr ? 0 : bq::typeIDOf(object);
}

const BQString* BQCopyTypeIDDescription(BQTypeID typeID) {
  const BQRuntimeClass* runtimeClass = bq::classOf(typeID);
  return runtimeClass == nullptr ? nullptr
                                 : BQStringCreateWithCString(runtimeClass->className, kBQStringEncodingUTF8);
}

bool BQEqual(BQTypeRef first, BQTypeRef second) {
  if (first == second) return true;
  if (first == nullptr || second == nullptr || baseOf(first)->typeID != baseOf(second)->typeID) return false;
  const BQRuntimeClass* runtimeClass = bq::classOf(bq::typeIDOf(first));
  return runtimeClass->equal != nullptr && runtimeClass->equal(first, second);
}

BQHashCode BQHash(BQTypeRef object) {
  if (object == nullptr) return 0;
  const BQRuntimeClass* runtimeClass = bq::classOf(bq::typeIDOf(object));
  if (runtimeClass->hash != nullptr) return runtimeClass->hash(object);
  return reinterpret_cast<BQHashCode>(object) >> 4;
}
