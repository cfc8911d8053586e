/* How many files, and so connections, the process may have open. */
#ifndef VXSERVE_DESCRIPTOR_LIMIT_H
#define VXSERVE_DESCRIPTOR_LIMIT_H

namespace tools::vxserve {

/* Raises the limit as far as that is allowed, and returns how many connections it leaves room for. */
unsigned raiseDescriptorLimit();

}  // namespace tools::vxserve

#endif
