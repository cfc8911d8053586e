/* The properties that carry the options to the library. */
#ifndef VXCALL_PROPERTIES_H
#define VXCALL_PROPERTIES_H

#include <functional>

#include <BQ/BQBase.h>

#include "Options.h"

namespace tools::vxcall {

using SetProperty = std::function<void(const BQString* key, BQTypeRef value)>;

/* Those of the options that are given, and no others. Throws UsageError. */
void setProperties(const Options& options, const SetProperty& set);

}  // namespace tools::vxcall

#endif
