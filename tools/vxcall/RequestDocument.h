/* The request document of a call that is not made, or of which nothing was captured. */
#ifndef VXCALL_REQUEST_DOCUMENT_H
#define VXCALL_REQUEST_DOCUMENT_H

#include <optional>
#include <string>

#include "Invocation.h"

namespace tools::vxcall {

/* The document byte for byte; nothing if none can be made of the parameters. */
std::optional<std::string> makeRequestDocument(const Invocation& invocation);

}  // namespace tools::vxcall

#endif
