/* The properties that carry the options to the library. */
#ifndef VXCALL_PROPERTIES_H
#define VXCALL_PROPERTIES_H

#include <functional>

#include <BQ/BQBase.h>

#include "Options.h"

namespace tools::vxcall {

using SetProperty = std::function<void(const BQString* key, BQTypeRef value)>;

/* The constant of the protocol that the options name; borrowed. */
const BQString* protocolOf(const Options& options);

/* Those that shape the request document. */
void setDocumentProperties(const Options& options, const SetProperty& set);

/* Those that shape the HTTP exchange. Throws UsageError. */
void setTransportProperties(const Options& options, const SetProperty& set);

}  // namespace tools::vxcall

#endif
