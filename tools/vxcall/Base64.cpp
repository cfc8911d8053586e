#include "Base64.h"

namespace tools::vxcall {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/* The alphabet characters of a text, without white space and padding. */
struct Sextets {
  std::vector<uint8_t> values;
  size_t padding = 0;
};

std::optional<Sextets> readSextets(std::string_view text) {
  Sextets sextets;
  sextets.values.reserve(text.size());
  for (char c : text) {
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') continue;
    if (c == '=') {
      ++sextets.padding;
      continue;
    }
    size_t value = kAlphabet.find(c);
    if (value == std::string_view::npos || sextets.padding > 0) return std::nullopt;
    sextets.values.push_back(static_cast<uint8_t>(value));
  }
  return sextets;
}

}  // namespace

std::string encodeBase64(std::span<const uint8_t> bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t i = 0; i < bytes.size(); i += 3) {
    size_t count = std::min<size_t>(3, bytes.size() - i);
    uint32_t group = 0;
    for (size_t k = 0; k < 3; ++k) group = group << 8 | (k < count ? bytes[i + k] : 0u);
    for (size_t k = 0; k < 4; ++k) text += k <= count ? kAlphabet[group >> (18 - 6 * k) & 63] : '=';
  }
  return text;
}

std::optional<std::vector<uint8_t>> decodeBase64(std::string_view text) {
  std::optional<Sextets> sextets = readSextets(text);
  if (!sextets) return std::nullopt;
  const std::vector<uint8_t>& values = sextets->values;
  size_t rest = values.size() % 4;
  if (rest == 1 || sextets->padding != (4 - rest) % 4) return std::nullopt;

  std::vector<uint8_t> bytes;
  bytes.reserve(values.size() / 4 * 3 + 2);
  uint32_t bits = 0;
  int count = 0;
  for (uint8_t value : values) {
    bits = bits << 6 | value;
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes.push_back(static_cast<uint8_t>(bits >> count));
    bits &= (1u << count) - 1;
  }
  if (bits != 0) return std::nullopt;
  return bytes;
}

}  // namespace tools::vxcall
