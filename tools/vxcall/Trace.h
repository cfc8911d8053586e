/* What went over the wire, for the user to read. */
#ifndef VXCALL_TRACE_H
#define VXCALL_TRACE_H

#include <string>

#include <BQ/BQBase.h>

namespace tools::vxcall {

/* Headers and bodies of both directions, as far as the result dictionary has captured them. */
std::string traceOf(const BQDictionary* result);

}  // namespace tools::vxcall

#endif
