/* The URL of a server or a proxy. */
#ifndef VXCALL_ENDPOINT_H
#define VXCALL_ENDPOINT_H

#include <string>

#include <BQ/BQBase.h>
#include <BQ/BQRef.h>

namespace tools::vxcall {

/* Throws UsageError unless the text is an http or https URL with a host. */
BQRef<const BQURL> parseEndpoint(const std::string& text);

}  // namespace tools::vxcall

#endif
