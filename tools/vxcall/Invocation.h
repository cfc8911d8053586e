/* What is to be called. */
#ifndef VXCALL_INVOCATION_H
#define VXCALL_INVOCATION_H

#include <string>
#include <vector>

#include <BQ/BQBase.h>
#include <BQ/BQRef.h>
#include <VX/VXMethodInvocation.h>

#include "Options.h"

namespace tools::vxcall {

/* An invocation with what the library does not tell about it. */
struct Invocation {
  BQRef<OpaqueVXMethodInvocationRef> handle;
  /* One of the library's constants; borrowed. */
  const BQString* protocol;
  std::string url;
  BQRef<const BQString> method;
  /* What the user may have meant otherwise, or is lost on the way. */
  std::vector<std::string> notes = {};
};

/* The invocation that the options describe or load, with their properties. Throws UsageError. */
Invocation makeInvocation(const Options& options);

}  // namespace tools::vxcall

#endif
