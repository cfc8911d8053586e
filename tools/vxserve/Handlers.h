/* The protocol handlers. */
#ifndef VXSERVE_HANDLERS_H
#define VXSERVE_HANDLERS_H

#include <VX/VXProtocolHandler.h>

#include "Endpoint.h"

namespace tools::vxserve {

/*
 * The calling thread's handler for an endpoint, borrowed: a handler is for one thread at a time, and
 * reusing it spares every request the making of one. The first call of the process must return
 * before other threads call.
 */
VXProtocolHandlerRef handlerOf(const Endpoint& endpoint);

}  // namespace tools::vxserve

#endif
