/* The protocol handlers. */
#ifndef VXSERVE_HANDLERS_H
#define VXSERVE_HANDLERS_H

#include <VX/VXProtocolHandler.h>

#include "Endpoint.h"

namespace tools::vxserve {

/*
 * The calling thread's handler for an endpoint, borrowed. Each thread has its own, since a handler is for one
 * thread at a time; it is reused because making one for every request costs time.
 */
VXProtocolHandlerRef handlerOf(const Endpoint& endpoint);

}  // namespace tools::vxserve

#endif
