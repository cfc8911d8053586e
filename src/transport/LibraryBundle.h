/* The record by which the library makes itself known in the process. */
#ifndef VX_TRANSPORT_LIBRARY_BUNDLE_H
#define VX_TRANSPORT_LIBRARY_BUNDLE_H

#include <BQ/BQBase.h>

namespace vx {

/* The identifier of the record. */
extern const BQString* const kLibraryBundleIdentifier;

/* Registers the record with the version of the build, the first time it is called. */
void registerLibraryBundle();

}  // namespace vx

#endif
