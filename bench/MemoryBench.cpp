/* The memory that encoding and decoding take, as JSON on the standard output. */
#include <cinttypes>
#include <cstdio>

#include "AllocationMeter.h"
#include "Payload.h"

namespace bench {
namespace {

void print(const char* kind, const Payload& payload, size_t documentLength, const AllocationMeter& meter) {
  std::printf(R"({"name": "%s/%s", "document": %zu, "peak": %)" PRId64 R"(, "kept": %)" PRId64
              R"(, "allocations": %)" PRId64 "}\n",
              kind, payload.name.c_str(), documentLength, meter.peak(), meter.inUse(),
              meter.allocationCount());
}

void measure(const Payload& payload) {
  /* Also warms up what is made once per thread. */
  const auto document = checkedReply(payload);
  const size_t length = bytesOf(document.get()).size();
  {
    const auto value = payload.makeValue();
    const AllocationMeter meter;
    const auto encoded = encodeReply(value.get());
    print("encode", payload, length, meter);
  }
  const AllocationMeter meter;
  const auto result = decodeReply(document.get());
  print("decode", payload, length, meter);
}

}  // namespace
}  // namespace bench

int main() {
  for (const bench::Payload& payload : bench::payloads()) bench::measure(payload);
  return 0;
}
