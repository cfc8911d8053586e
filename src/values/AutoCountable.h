/* The base of the scoped holders of platform values. */
#ifndef VX_VALUES_AUTO_COUNTABLE_H
#define VX_VALUES_AUTO_COUNTABLE_H

#include <BQ/BQBase.h>

namespace vx {

/* A holder owns what it holds and releases it when it is destroyed. */
class AutoCountable {
 public:
  virtual ~AutoCountable() = default;
  virtual bool isEmpty() const = 0;
  /* The held object, borrowed; may be null. */
  virtual BQTypeRef getRef() = 0;

 protected:
  AutoCountable() = default;
  AutoCountable(const AutoCountable&) = default;
  AutoCountable& operator=(const AutoCountable&) = delete;
};

}  // namespace vx

#endif
