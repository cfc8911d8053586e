#include "Endpoint.h"

#include <algorithm>
#include <iterator>

#include <VX/VXConstants.h>

namespace tools::vxserve {

const Endpoint* findEndpoint(std::string_view path) {
  static const Endpoint endpoints[kEndpointCount] = {
      {0, "/RPC2", "xml-rpc", kVXXMLRPCProtocol, xmlrpcMethods, false},
      {1, "/soap", "soap-2001", kVXSOAP2001Protocol, soapMethods, true},
      {2, "/soap-1999", "soap-1999", kVXSOAP1999Protocol, soapMethods, true},
  };
  const auto* found = std::find_if(std::begin(endpoints), std::end(endpoints),
                                   [path](const Endpoint& endpoint) { return endpoint.path == path; });
  return found == std::end(endpoints) ? nullptr : found;
}

}  // namespace tools::vxserve
