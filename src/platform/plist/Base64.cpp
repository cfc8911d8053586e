#include "platform/plist/Base64.h"

#include <array>

namespace bq {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr uint8_t kNoDigit = 0xFF, kWhitespace = 0xFE, kPadding = 0xFD;

constexpr std::array<uint8_t, 256> makeDigits() {
  std::array<uint8_t, 256> digits{};
  digits.fill(kNoDigit);
  for (size_t i = 0; i < kAlphabet.size(); ++i)
    digits[static_cast<uint8_t>(kAlphabet[i])] = static_cast<uint8_t>(i);
  for (char c : {' ', '\t', '\r', '\n'}) digits[static_cast<uint8_t>(c)] = kWhitespace;
  digits['='] = kPadding;
  return digits;
}
constexpr std::array<uint8_t, 256> kDigits = makeDigits();

}  // namespace

void appendBase64(std::string& text, const uint8_t* bytes, size_t length) {
  text.reserve(text.size() + (length + 2) / 3 * 4);
  for (size_t i = 0; i < length; i += 3) {
    size_t count = length - i < 3 ? length - i : 3;
    uint32_t group = uint32_t{bytes[i]} << 16;
    if (count > 1) group |= uint32_t{bytes[i + 1]} << 8;
    if (count > 2) group |= bytes[i + 2];
    for (size_t digit = 0; digit < 4; ++digit) {
      text += digit <= count ? kAlphabet[group >> (18 - 6 * digit) & 63] : '=';
    }
  }
}

bool appendBase64Decoded(std::string& bytes, std::string_view text) {
  uint32_t group = 0;
  size_t digits = 0, padding = 0;
  for (char c : text) {
    uint8_t digit = kDigits[static_cast<uint8_t>(c)];
    if (digit == kWhitespace) continue;
    if (digit == kPadding) {
      ++padding;
      continue;
    }
    if (digit == kNoDigit || padding != 0) return false;
    group = group << 6 | digit;
    if (++digits % 4 != 0) continue;
    for (int shift = 16; shift >= 0; shift -= 8) bytes += static_cast<char>(group >> shift);
    group = 0;
  }
  size_t rest = digits % 4;
  if (rest == 1 || padding != (4 - rest) % 4) return false;
  if (rest >= 2) bytes += static_cast<char>(group >> (rest == 2 ? 4 : 10));
  if (rest == 3) bytes += static_cast<char>(group >> 2);
  return true;
}

}  // namespace bq
