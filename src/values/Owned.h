/* A typed holder of one reference, for values that need no more than to be released. */
#ifndef VX_VALUES_OWNED_H
#define VX_VALUES_OWNED_H

#include <BQ/BQObject.h>

#include <memory>

namespace vx {

struct Release {
  void operator()(BQTypeRef object) const { BQRelease(object); }
};

/* Takes over a reference; `release()` gives it on. */
template <class T>
using Owned = std::unique_ptr<T, Release>;

/* Takes over a reference that the caller created. */
template <class T>
Owned<T> own(T* object) {
  return Owned<T>(object);
}

/* Adds a reference. */
template <class T>
Owned<T> retain(T* object) {
  BQRetain(object);
  return Owned<T>(object);
}

}  // namespace vx

#endif
