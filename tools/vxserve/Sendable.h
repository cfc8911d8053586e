/* Values that came from a peer and go back to one. */
#ifndef VXSERVE_SENDABLE_H
#define VXSERVE_SENDABLE_H

#include <BQ/BQBase.h>

#include "common/Value.h"

namespace tools::vxserve {

/*
 * The value in a form that arrives as it is: the library writes the names of members as they stand,
 * takes those that begin with "/" for its own, and writes 0 for an integer beyond 32 bits. Names are
 * escaped, the library's keys left out; such an integer throws Fault. Mostly the value itself.
 */
Value makeSendable(BQTypeRef value);

}  // namespace tools::vxserve

#endif
