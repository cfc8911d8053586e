/* The answer to a request: a document made from a document. */
#ifndef VXSERVE_ANSWER_H
#define VXSERVE_ANSWER_H

#include <optional>
#include <string>

#include <BQ/BQBase.h>
#include <BQ/BQRef.h>

#include "Endpoint.h"

namespace tools::vxserve {

struct Answer {
  /* The reply or fault document; null in the one case that not even a fault can be written. */
  BQRef<const BQData> document;
  /* The status of HTTP that goes with it. */
  unsigned status = 200;
  /* For how many seconds it is to be held back. */
  double delay = 0;
  /* What was called, as far as that could be read. */
  std::string method;
  std::optional<int32_t> faultCode;
};

/* Reads the request, calls the method and writes what comes of it. Any bytes have an answer. */
Answer answerRequest(const Endpoint& endpoint, const BQData* body);

}  // namespace tools::vxserve

#endif
