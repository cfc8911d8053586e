/* A path of the server, and the protocol that is spoken there. */
#ifndef VXSERVE_ENDPOINT_H
#define VXSERVE_ENDPOINT_H

#include <cstddef>
#include <string_view>

#include <BQ/BQBase.h>

#include "MethodTable.h"

namespace tools::vxserve {

struct Endpoint {
  /* Its place among the endpoints. */
  size_t index;
  std::string_view path;
  /* The name of the protocol in the log. */
  std::string_view name;
  const BQString* protocol;
  const MethodTable& (*methods)();
  bool isSOAP;
};

inline constexpr size_t kEndpointCount = 3;

/* Null if nothing is served under the path. */
const Endpoint* findEndpoint(std::string_view path);

}  // namespace tools::vxserve

#endif
