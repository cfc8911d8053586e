#include "platform/text/StringHash.h"

#include <cstring>

#include <sys/random.h>

#include <bit>
#include <chrono>

namespace bq {
namespace {

struct Seed {
  uint64_t first, second;

  Seed() {
    if (getrandom(this, sizeof *this, GRND_NONBLOCK) == sizeof *this) return;
    first = static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    second = reinterpret_cast<uintptr_t>(this) * 0x9E3779B97F4A7C15u;
  }
};

struct State {
  uint64_t v0, v1, v2, v3;

  explicit State(const Seed& seed)
      : v0(seed.first ^ 0x736f6d6570736575u),
        v1(seed.second ^ 0x646f72616e646f6du),
        v2(seed.first ^ 0x6c7967656e657261u),
        v3(seed.second ^ 0x7465646279746573u) {}

  void round() {
    v0 += v1;
    v1 = std::rotl(v1, 13) ^ v0;
    v0 = std::rotl(v0, 32);
    v2 += v3;
    v3 = std::rotl(v3, 16) ^ v2;
    v0 += v3;
    v3 = std::rotl(v3, 21) ^ v0;
    v2 += v1;
    v1 = std::rotl(v1, 17) ^ v2;
    v2 = std::rotl(v2, 32);
  }

  void absorb(uint64_t word) {
    v3 ^= word;
    round();
    v0 ^= word;
  }
};

}  // namespace

uint64_t hashText(std::string_view text) {
  static const Seed seed;
  State state(seed);
  size_t whole = text.size() & ~size_t{7};
  for (size_t i = 0; i < whole; i += 8) {
    uint64_t word;
    std::memcpy(&word, text.data() + i, sizeof word);
    state.absorb(word);
  }
  uint64_t last = static_cast<uint64_t>(text.size()) << 56;
  for (size_t i = whole; i < text.size(); ++i) {
    last |= static_cast<uint64_t>(static_cast<unsigned char>(text[i])) << (8 * (i - whole));
  }
  state.absorb(last);
  state.v2 ^= 0xFF;
  for (int i = 0; i < 3; ++i) state.round();
  return state.v0 ^ state.v1 ^ state.v2 ^ state.v3;
}

}  // namespace bq
