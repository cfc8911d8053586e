/* The values that the benchmarks send. */
#ifndef BENCH_PAYLOAD_H
#define BENCH_PAYLOAD_H

#include <BQ/BQ.h>

#include <functional>
#include <string>
#include <vector>

namespace bench {

/* One case of the benchmarks. */
struct Payload {
  std::string name;
  std::function<BQRef<const void>()> makeValue;
};

/* The values that are encoded and decoded. */
const std::vector<Payload>& payloads();

/* The values that are sent to a server and back: an integer, and one small structure. */
const Payload& integerPayload();
const Payload& structPayload();

}  // namespace bench

#endif
