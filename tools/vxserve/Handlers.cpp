#include "Handlers.h"

#include <BQ/BQRef.h>
#include <VX/VXConstants.h>

#include "WireForms.h"

namespace tools::vxserve {
namespace {

using Handler = BQRef<OpaqueVXProtocolHandlerRef>;

Handler makeHandler(const Endpoint& endpoint) {
  auto handler = BQAdopt(VXProtocolHandlerCreate(nullptr, endpoint.protocol));
  if (endpoint.isSOAP) {
    setSOAPForms(handler.get(), endpoint.protocol == kVXSOAP1999Protocol);
  } else {
    setXMLRPCForms(handler.get());
  }
  return handler;
}

}  // namespace

VXProtocolHandlerRef handlerOf(const Endpoint& endpoint) {
  thread_local Handler handlers[kEndpointCount];
  Handler& handler = handlers[endpoint.index];
  if (!handler) handler = makeHandler(endpoint);
  return handler.get();
}

}  // namespace tools::vxserve
