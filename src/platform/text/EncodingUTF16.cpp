#include "platform/text/EncodingUTF16.h"

#include <bit>
#include <cstring>

#include "platform/text/EncodingUTF8.h"

namespace bq {

namespace {

constexpr char32_t kByteOrderMark = 0xFEFF;

template <class Unit>
constexpr Unit swapBytes(Unit unit) {
  if constexpr (sizeof unit == 2) return static_cast<Unit>(__builtin_bswap16(unit));
  return static_cast<Unit>(__builtin_bswap32(unit));
}

template <class Unit, std::endian Order>
Unit loadUnit(const uint8_t* bytes) {
  Unit unit;
  memcpy(&unit, bytes, sizeof unit);
  return Order == std::endian::native ? unit : swapBytes(unit);
}

template <class Unit, std::endian Order>
void appendUnit(std::string& out, Unit unit) {
  if (Order != std::endian::native) unit = swapBytes(unit);
  char bytes[sizeof unit];
  memcpy(bytes, &unit, sizeof unit);
  out.append(bytes, sizeof unit);
}

bool isHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool isLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

template <class Unit, std::endian Order>
bool decode(const uint8_t* bytes, size_t length, std::string& out) {
  if (length % sizeof(Unit) != 0) return false;
  out.reserve(out.size() + length);
  const uint8_t* end = bytes + length;
  while (bytes < end) {
    char32_t character = loadUnit<Unit, Order>(bytes);
    bytes += sizeof(Unit);
    if (sizeof(Unit) == 2 && isHighSurrogate(character) && bytes < end) {
      const char32_t low = loadUnit<Unit, Order>(bytes);
      if (!isLowSurrogate(low)) return false;
      character = 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00);
      bytes += sizeof(Unit);
    }
    if (!isScalarValue(character)) return false;
    appendUTF8Character(out, character);
  }
  return true;
}

/* Takes the byte order from a byte-order mark at the start, big-endian without one. */
template <class Unit>
bool decodeMarked(const uint8_t* bytes, size_t length, std::string& out) {
  if (length >= sizeof(Unit)) {
    if (loadUnit<Unit, std::endian::little>(bytes) == kByteOrderMark) {
      return decode<Unit, std::endian::little>(bytes + sizeof(Unit), length - sizeof(Unit), out);
    }
    if (loadUnit<Unit, std::endian::big>(bytes) == kByteOrderMark) {
      return decode<Unit, std::endian::big>(bytes + sizeof(Unit), length - sizeof(Unit), out);
    }
  }
  return decode<Unit, std::endian::big>(bytes, length, out);
}

template <class Unit, std::endian Order>
bool encode(const char* utf8, size_t length, std::string& out) {
  out.reserve(out.size() + length * sizeof(Unit));
  for (size_t position = 0; position < length;) {
    const size_t size = measureUTF8Character(utf8 + position, length - position);
    if (size == 0) return false;
    char32_t character = decodeUTF8Character(utf8 + position, size);
    if (sizeof(Unit) == 2 && character >= 0x10000) {
      character -= 0x10000;
      appendUnit<Unit, Order>(out, static_cast<Unit>(0xD800 + (character >> 10)));
      character = 0xDC00 + (character & 0x3FF);
    }
    appendUnit<Unit, Order>(out, static_cast<Unit>(character));
    position += size;
  }
  return true;
}

template <class Unit>
bool encodeMarked(const char* utf8, size_t length, std::string& out) {
  appendUnit<Unit, std::endian::big>(out, static_cast<Unit>(kByteOrderMark));
  return encode<Unit, std::endian::big>(utf8, length, out);
}

}  // namespace

bool isWideEncoding(BQStringEncoding encoding) {
  return encoding == kBQStringEncodingUTF16 || encoding == kBQStringEncodingUTF16BE ||
         encoding == kBQStringEncodingUTF16LE || encoding == kBQStringEncodingUTF32 || encoding == kUTF32BE ||
         encoding == kUTF32LE;
}

bool decodeWideText(const uint8_t* bytes, size_t length, BQStringEncoding encoding, std::string& out) {
  switch (encoding) {
    case kBQStringEncodingUTF16:
      return decodeMarked<uint16_t>(bytes, length, out);
    case kBQStringEncodingUTF16BE:
      return decode<uint16_t, std::endian::big>(bytes, length, out);
    case kBQStringEncodingUTF16LE:
      return decode<uint16_t, std::endian::little>(bytes, length, out);
    case kBQStringEncodingUTF32:
      return decodeMarked<uint32_t>(bytes, length, out);
    case kUTF32BE:
      return decode<uint32_t, std::endian::big>(bytes, length, out);
    case kUTF32LE:
      return decode<uint32_t, std::endian::little>(bytes, length, out);
    default:
      return false;
  }
}

bool encodeWideText(const char* utf8, size_t length, BQStringEncoding encoding, std::string& out) {
  switch (encoding) {
    case kBQStringEncodingUTF16:
      return encodeMarked<uint16_t>(utf8, length, out);
    case kBQStringEncodingUTF16BE:
      return encode<uint16_t, std::endian::big>(utf8, length, out);
    case kBQStringEncodingUTF16LE:
      return encode<uint16_t, std::endian::little>(utf8, length, out);
    case kBQStringEncodingUTF32:
      return encodeMarked<uint32_t>(utf8, length, out);
    case kUTF32BE:
      return encode<uint32_t, std::endian::big>(utf8, length, out);
    case kUTF32LE:
      return encode<uint32_t, std::endian::little>(utf8, length, out);
    default:
      return false;
  }
}

}  // namespace bq
