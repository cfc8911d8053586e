/* Counts how deep containers are nested inside each other while they are walked. */
#ifndef BQ_OBJECT_DEPTH_GUARD_H
#define BQ_OBJECT_DEPTH_GUARD_H

#include "platform/object/Object.h"

namespace bq {

class DepthGuard {
 public:
  DepthGuard() { ++depth_; }
  ~DepthGuard() { --depth_; }
  DepthGuard(const DepthGuard&) = delete;
  DepthGuard& operator=(const DepthGuard&) = delete;

  bool tooDeep() const { return depth_ > kMaximumDepth; }

 private:
  static inline thread_local int depth_ = 0;
};

}  // namespace bq

#endif
