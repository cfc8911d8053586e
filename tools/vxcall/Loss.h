/* What the values of a call lose on the way, since the protocols have no room for it. */
#ifndef VXCALL_LOSS_H
#define VXCALL_LOSS_H

#include <string>
#include <vector>

#include "Invocation.h"

namespace tools::vxcall {

/* A note for each kind of loss: where it is met first, and how many more there are. */
std::vector<std::string> describeLosses(const Invocation& invocation);

}  // namespace tools::vxcall

#endif
