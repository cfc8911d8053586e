/* A call of a server, which can be made again and again. */
#ifndef VXCALL_CALL_H
#define VXCALL_CALL_H

#include <BQ/BQBase.h>

#include "Invocation.h"

namespace tools::vxcall {

using Result = BQRef<const BQDictionary>;

class Call {
 public:
  /* `isAsync` takes the scheduled road instead of the synchronous one. The invocation must live on. */
  Call(const Invocation& invocation, bool isAsync)
      : invocation_(invocation.handle.get()), isAsync_(isAsync) {}

  /* Makes the call and waits for its result dictionary. */
  Result perform();

 private:
  Result performOnRunLoop();

  VXMethodInvocationRef invocation_;
  bool isAsync_;
};

}  // namespace tools::vxcall

#endif
