/* The bytes of a string in an encoding. */
#include <cstring>

#include <string>
#include <string_view>

#include <BQ/BQData.h>
#include <BQ/BQString.h>

#include "platform/text/Encoding.h"
#include "platform/text/EncodingUTF16.h"
#include "platform/text/StringImpl.h"

namespace bq {
namespace {

size_t characterLength(char first) {
  auto byte = static_cast<unsigned char>(first);
  return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

/* The whole characters among the first `limit` bytes. */
std::string_view cutToCharacters(std::string_view text, size_t limit) {
  if (limit >= text.size()) return text;
  while (!isCharacterBoundary(text, limit)) --limit;
  return text.substr(0, limit);
}

/* In which text goes on behind its first character: without a further byte-order mark. */
BQStringEncoding continuationOf(BQStringEncoding encoding) {
  if (encoding == kBQStringEncodingUTF16) return kBQStringEncodingUTF16BE;
  return encoding == kBQStringEncodingUTF32 ? kUTF32BE : encoding;
}

class Conversion {
 public:
  Conversion(BQStringEncoding encoding, uint8_t lossByte, size_t room)
      : encoding_(encoding), lossByte_(lossByte), room_(room) {}

  const std::string& bytes() const { return bytes_; }

  /* Converts the characters from the start that have a form in the encoding and fit; gives their length. */
  size_t convert(std::string_view text) {
    if (encodeText(text.data(), text.size(), encoding_, lossByte_, bytes_) && bytes_.size() <= room_) {
      return text.size();
    }
    return convertOneByOne(text);
  }

 private:
  size_t convertOneByOne(std::string_view text) {
    bytes_.clear();
    size_t converted = 0;
    while (converted < text.size()) {
      size_t length = characterLength(text[converted]), before = bytes_.size();
      BQStringEncoding encoding = converted == 0 ? encoding_ : continuationOf(encoding_);
      bool fits =
          encodeText(text.data() + converted, length, encoding, lossByte_, bytes_) && bytes_.size() <= room_;
      if (!fits) {
        bytes_.resize(before);
        break;
      }
      converted += length;
    }
    return converted;
  }

  BQStringEncoding encoding_;
  uint8_t lossByte_;
  size_t room_;
  std::string bytes_;
};

}  // namespace
}  // namespace bq

using bq::isString;
using bq::viewOf;

BQIndex BQStringGetBytes(const BQString* string, BQRange range, BQStringEncoding encoding, uint8_t lossByte,
                         uint8_t* buffer, BQIndex size, BQIndex* used) {
  if (used != nullptr) *used = 0;
  if (!isString(string) || !bq::isValidRange(viewOf(string), range)) return 0;
  size_t room = buffer == nullptr ? SIZE_MAX : static_cast<size_t>(size < 0 ? 0 : size);
  std::string_view text =
      viewOf(string).substr(static_cast<size_t>(range.location), static_cast<size_t>(range.length));
  std::string_view made;
  bq::Conversion conversion(encoding, lossByte, room);
  if (encoding == kBQStringEncodingUTF8) {
    made = text = bq::cutToCharacters(text, room);
  } else {
    /* No encoding makes less than one byte of a character, which has four at most. */
    if (room < text.size() / 4) text = bq::cutToCharacters(text, room * 4);
    text = text.substr(0, conversion.convert(text));
    made = conversion.bytes();
  }
  if (buffer != nullptr && !made.empty()) std::memcpy(buffer, made.data(), made.size());
  if (used != nullptr) *used = static_cast<BQIndex>(made.size());
  return static_cast<BQIndex>(text.size());
}

const BQData* BQStringCreateExternalRepresentation(const BQString* string, BQStringEncoding encoding,
                                                   uint8_t lossByte) {
  if (!isString(string)) return nullptr;
  if (encoding == kBQStringEncodingUTF8)
    return BQDataCreate(string->bytes, static_cast<BQIndex>(string->length));
  std::string bytes;
  if (!bq::encodeText(string->bytes, string->length, encoding, lossByte, bytes)) return nullptr;
  return BQDataCreate(bytes.data(), static_cast<BQIndex>(bytes.size()));
}
