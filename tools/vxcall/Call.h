/* A call of a server, which can be made again and again. */
#ifndef VXCALL_CALL_H
#define VXCALL_CALL_H

#include <BQ/BQBase.h>
#include <VX/VXMethodInvocation.h>

#include "Options.h"
#include "common/Ref.h"

namespace tools::vxcall {

using Result = Ref<const BQDictionary>;

class Call {
 public:
  /* Throws UsageError if the options do not describe a call. */
  explicit Call(const Options& options);

  /* Makes the call and waits for its result dictionary. */
  Result perform();

 private:
  Result performOnRunLoop();

  Ref<OpaqueVXMethodInvocationRef> invocation_;
  bool async_;
};

}  // namespace tools::vxcall

#endif
