/* What the benchmarks send: a value, and the reply document that carries it. */
#ifndef BENCH_PAYLOAD_H
#define BENCH_PAYLOAD_H

#include <VX/VX.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Owned.h"

namespace bench {

/* One case of the benchmarks. */
struct Payload {
  std::string name;
  std::function<Owned<const void>()> makeValue;
};

/* The values that are encoded and decoded. */
const std::vector<Payload>& payloads();

/* The values that are sent to a server and back: an integer, and one small structure. */
const Payload& integerPayload();
const Payload& structPayload();

/* The handler that all documents go through. */
VXProtocolHandlerRef sharedHandler();

/* The XML-RPC reply that carries a value. */
Owned<const BQData> encodeReply(BQTypeRef value);

/* The result dictionary of a reply. */
Owned<const BQDictionary> decodeReply(const BQData* document);

std::string_view bytesOf(const BQData* data);

/*
 * The reply of a payload, after it was seen to decode to the value that it was made of, so that no
 * benchmark measures a failure. Ends the program if it does not.
 */
Owned<const BQData> checkedReply(const Payload& payload);

}  // namespace bench

#endif
