/* A holder of one reference. */
#ifndef BENCH_OWNED_H
#define BENCH_OWNED_H

#include <BQ/BQObject.h>

#include <memory>

namespace bench {

struct Release {
  void operator()(BQTypeRef object) const { BQRelease(object); }
};

template <class T>
using Owned = std::unique_ptr<T, Release>;

/* Takes over a reference. */
template <class T>
Owned<T> own(T* object) {
  return Owned<T>(object);
}

}  // namespace bench

#endif
