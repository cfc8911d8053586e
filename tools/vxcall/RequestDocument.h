/* The request document of a call that is not made. */
#ifndef VXCALL_REQUEST_DOCUMENT_H
#define VXCALL_REQUEST_DOCUMENT_H

#include <string>

#include "Options.h"

namespace tools::vxcall {

/* The document byte for byte. Throws UsageError if the options describe none. */
std::string makeRequestDocument(const Options& options);

}  // namespace tools::vxcall

#endif
