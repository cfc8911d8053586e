/* Writing and reading reply documents, beside expat doing nothing with the same bytes. */
#include <benchmark/benchmark.h>

#include "ExpatFloor.h"
#include "Payload.h"

namespace bench {
namespace {

void countBytes(benchmark::State& state, std::string_view document) {
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(document.size()));
}

void encode(benchmark::State& state, const Payload& payload) {
  const auto value = payload.makeValue();
  const auto document = checkedReply(payload);
  for (auto _ : state) benchmark::DoNotOptimize(encodeReply(value.get()));
  countBytes(state, bytesOf(document.get()));
}

void decode(benchmark::State& state, const Payload& payload) {
  const auto document = checkedReply(payload);
  for (auto _ : state) benchmark::DoNotOptimize(decodeReply(document.get()));
  countBytes(state, bytesOf(document.get()));
}

void parseFloor(benchmark::State& state, const Payload& payload) {
  const auto document = checkedReply(payload);
  for (auto _ : state) benchmark::DoNotOptimize(parseWithExpat(bytesOf(document.get())));
  if (!parseWithExpat(bytesOf(document.get()))) state.SkipWithError("not well-formed");
  countBytes(state, bytesOf(document.get()));
}

struct Kind {
  const char* prefix;
  void (*run)(benchmark::State& state, const Payload& payload);
};

constexpr Kind kKinds[] = {{"encode/", encode}, {"decode/", decode}, {"expat/", parseFloor}};

const bool registered = [] {
  for (const Payload& payload : payloads()) {
    for (const Kind& kind : kKinds) {
      benchmark::RegisterBenchmark((kind.prefix + payload.name).c_str(), kind.run, payload);
    }
  }
  return true;
}();

}  // namespace
}  // namespace bench
