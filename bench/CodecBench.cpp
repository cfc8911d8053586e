/* Writing and reading reply documents, beside expat doing nothing with the same bytes. */
#include <benchmark/benchmark.h>

#include <functional>
#include <string>

#include "Codec.h"
#include "ExpatFloor.h"
#include "Payload.h"

namespace bench {
namespace {

void countBytes(benchmark::State& state, std::string_view document) {
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(document.size()));
}

void encode(benchmark::State& state, const Codec& codec, const Payload& payload) {
  const auto value = payload.makeValue();
  const auto document = codec.checkedReply(payload);
  for (auto _ : state) benchmark::DoNotOptimize(codec.encodeReply(value.get()));
  countBytes(state, bytesOf(document.get()));
}

void decode(benchmark::State& state, const Codec& codec, const Payload& payload) {
  const auto document = codec.checkedReply(payload);
  for (auto _ : state) benchmark::DoNotOptimize(codec.decodeReply(document.get()));
  countBytes(state, bytesOf(document.get()));
}

void parseFloor(benchmark::State& state, const Codec& codec, const Payload& payload) {
  const auto document = codec.checkedReply(payload);
  for (auto _ : state) benchmark::DoNotOptimize(parseWithExpat(bytesOf(document.get())));
  if (!parseWithExpat(bytesOf(document.get()))) state.SkipWithError("not well-formed");
  countBytes(state, bytesOf(document.get()));
}

struct Kind {
  const char* name;
  void (*run)(benchmark::State& state, const Codec& codec, const Payload& payload);
};

constexpr Kind kKinds[] = {{"encode", encode}, {"decode", decode}, {"expat", parseFloor}};

void registerAll(const char* suffix, const Codec& codec, const Payload& payload) {
  for (const Kind& kind : kKinds) {
    const std::string name = std::string(kind.name) + suffix + "/" + payload.name;
    benchmark::RegisterBenchmark(name.c_str(), kind.run, std::ref(codec), payload);
  }
}

const bool registered = [] {
  for (const Payload& payload : payloads()) {
    registerAll("", Codec::xmlRPC(), payload);
    registerAll("-soap", Codec::soap(), payload);
  }
  return true;
}();

}  // namespace
}  // namespace bench
