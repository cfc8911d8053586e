#include "platform/text/EncodingUTF8.h"

#include <cstring>

#include "platform/text/Encoding.h"

namespace bq {

namespace {

bool isContinuation(char byte) {
  return (static_cast<uint8_t>(byte) & 0xC0) == 0x80;
}

uint64_t loadWord(const char* bytes) {
  uint64_t word;
  memcpy(&word, bytes, sizeof word);
  return word;
}

/*
 * Whether the second byte of a character suits the first: this is where overlong forms, surrogates
 * and numbers beyond U+10FFFF show.
 */
bool isSecondByteInRange(uint8_t first, char second) {
  const auto byte = static_cast<uint8_t>(second);
  switch (first) {
    case 0xE0:
      return byte >= 0xA0;
    case 0xED:
      return byte < 0xA0;
    case 0xF0:
      return byte >= 0x90;
    case 0xF4:
      return byte < 0x90;
    default:
      return true;
  }
}

}  // namespace

size_t countASCIIPrefix(const char* bytes, size_t length) {
  constexpr uint64_t kHighBits = 0x8080808080808080u;
  size_t position = 0;
  for (; position + 16 <= length; position += 16) {
    if (((loadWord(bytes + position) | loadWord(bytes + position + 8)) & kHighBits) != 0) break;
  }
  while (position < length && static_cast<uint8_t>(bytes[position]) < 0x80) ++position;
  return position;
}

size_t measureUTF8Character(const char* bytes, size_t length) {
  const auto first = static_cast<uint8_t>(bytes[0]);
  if (first < 0x80) return 1;
  if (first < 0xC2 || first > 0xF4) return 0;
  const size_t size = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (length < size || !isSecondByteInRange(first, bytes[1])) return 0;
  for (size_t index = 1; index < size; ++index) {
    if (!isContinuation(bytes[index])) return 0;
  }
  return size;
}

char32_t decodeUTF8Character(const char* bytes, size_t length) {
  static constexpr uint8_t kLeadMasks[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  char32_t character = static_cast<uint8_t>(bytes[0]) & kLeadMasks[length];
  for (size_t index = 1; index < length; ++index) {
    character = character << 6 | (static_cast<uint8_t>(bytes[index]) & 0x3F);
  }
  return character;
}

void appendUTF8Character(std::string& out, char32_t character) {
  if (character < 0x80) {
    out.push_back(static_cast<char>(character));
    return;
  }
  char bytes[4];
  size_t size = character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
  static constexpr uint8_t kLeadBytes[] = {0, 0, 0xC0, 0xE0, 0xF0};
  for (size_t index = size - 1; index > 0; --index, character >>= 6) {
    bytes[index] = static_cast<char>(0x80 | (character & 0x3F));
  }
  bytes[0] = static_cast<char>(kLeadBytes[size] | character);
  out.append(bytes, size);
}

bool isWellFormedUTF8(const char* bytes, size_t length) {
  return measureWellFormedUTF8(bytes, length) == length;
}

size_t measureWellFormedUTF8(const char* bytes, size_t length) {
  size_t position = countASCIIPrefix(bytes, length);
  while (position < length) {
    const size_t size = measureUTF8Character(bytes + position, length - position);
    if (size == 0) break;
    position += size;
    /* Text that left ASCII tends to stay outside it: the fast scan pays only after an ASCII byte. */
    if (position < length && static_cast<uint8_t>(bytes[position]) < 0x80) {
      position += countASCIIPrefix(bytes + position, length - position);
    }
  }
  return position;
}

}  // namespace bq
