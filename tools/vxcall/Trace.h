/* What went over the wire, for the user to read. */
#ifndef VXCALL_TRACE_H
#define VXCALL_TRACE_H

#include <string>

#include <BQ/BQBase.h>

#include "Invocation.h"

namespace tools::vxcall {

/*
 * The request line, which is made of the call as it began, and the status line, headers and bodies of
 * both directions, as far as the result dictionary has captured them; of a call without a reply the request
 * line and the document.
 */
std::string traceOf(const BQDictionary* result, const Invocation& invocation);

}  // namespace tools::vxcall

#endif
