/* The functions behind methods that both protocols offer. */
#ifndef VXSERVE_FUNCTIONS_H
#define VXSERVE_FUNCTIONS_H

#include "Call.h"

namespace tools::vxserve {

/* Each takes its arguments from the call; see Method.h. */
Value echo(Call& call);
Value add(Call& call);
Value concat(Call& call);
Value slow(Call& call);

}  // namespace tools::vxserve

#endif
