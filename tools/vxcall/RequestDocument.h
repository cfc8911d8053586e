/* The request document of a call that is not made. */
#ifndef VXCALL_REQUEST_DOCUMENT_H
#define VXCALL_REQUEST_DOCUMENT_H

#include <string>

#include "Invocation.h"

namespace tools::vxcall {

/* The document byte for byte. Throws UsageError if none can be made. */
std::string makeRequestDocument(const Invocation& invocation);

}  // namespace tools::vxcall

#endif
