/* Short names for the holders of references. */
#ifndef VX_VALUES_OWNED_H
#define VX_VALUES_OWNED_H

#include <BQ/BQRef.h>

namespace vx {

template <class T>
using Owned = BQRef<T>;

/* Takes over a reference that the caller created. */
template <class T>
Owned<T> own(T* object) {
  return BQAdopt(object);
}

/* Adds a reference. */
template <class T>
Owned<T> retain(T* object) {
  return Owned<T>::retain(object);
}

}  // namespace vx

#endif
