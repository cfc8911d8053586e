/* What is carried out as it was written, though it was most likely meant otherwise. */
#ifndef VXCALL_DOUBT_H
#define VXCALL_DOUBT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <BQ/BQBase.h>

#include "Options.h"

namespace tools::vxcall {

/* A note on a parameter, [TYPE:]VALUE, that is sent as a string for want of a type that exists. */
std::optional<std::string> doubtParameter(std::string_view name, std::string_view text);

/* Notes on options that have no effect in a protocol, which is one of the library's constants. */
std::vector<std::string> doubtOptions(const Options& options, const BQString* protocol);

}  // namespace tools::vxcall

#endif
