/* The memory that encoding and decoding take, as JSON on the standard output. */
#include <cinttypes>
#include <cstdio>
#include <functional>
#include <thread>

#include "AllocationMeter.h"
#include "Codec.h"
#include "Payload.h"

namespace bench {
namespace {

void print(const char* kind, const Payload& payload, size_t documentLength, const AllocationMeter& meter) {
  std::printf(R"({"name": "%s/%s", "document": %zu, "peak": %)" PRId64 R"(, "kept": %)" PRId64
              R"(, "allocations": %)" PRId64 "}\n",
              kind, payload.name.c_str(), documentLength, meter.peak(), meter.inUse(),
              meter.allocationCount());
}

void measureEncode(const Payload& payload, size_t documentLength) {
  const auto value = payload.makeValue();
  const AllocationMeter meter;
  const auto document = Codec::xmlRPC().encodeReply(value.get());
  print("encode", payload, documentLength, meter);
}

void measureDecode(const Payload& payload, const BQData* document) {
  const AllocationMeter meter;
  const auto result = Codec::xmlRPC().decodeReply(document);
  print("decode", payload, bytesOf(document).size(), meter);
}

/* On threads of their own, so that what a thread keeps for its next document counts, too. */
void measure(const Payload& payload) {
  const auto document = Codec::xmlRPC().checkedReply(payload);
  std::thread(measureEncode, std::cref(payload), bytesOf(document.get()).size()).join();
  std::thread(measureDecode, std::cref(payload), document.get()).join();
}

}  // namespace
}  // namespace bench

int main() {
  for (const bench::Payload& payload : bench::payloads()) bench::measure(payload);
  return 0;
}
