/* An invocation as a file. */
#ifndef VXCALL_SAVED_INVOCATION_H
#define VXCALL_SAVED_INVOCATION_H

#include <string>

#include "Invocation.h"

namespace tools::vxcall {

/* From a file, or from standard input for "-". Throws UsageError if there is no invocation in it. */
Invocation loadInvocation(const std::string& path);

/* The bytes that such a file holds. Throws UsageError if a value cannot be kept in one. */
std::string serializeInvocation(const Invocation& invocation);

}  // namespace tools::vxcall

#endif
