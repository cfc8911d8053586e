#include "platform/text/Encoding.h"

#include <BQ/BQString.h>

#include "platform/object/Object.h"
#include "platform/text/EncodingConverter.h"
#include "platform/text/EncodingTable.h"
#include "platform/text/EncodingUTF16.h"
#include "platform/text/EncodingUTF8.h"

namespace bq {

namespace {

bool decodeLatin1(const char* bytes, size_t length, std::string& out) {
  out.reserve(out.size() + length);
  while (length > 0) {
    const size_t plain = countASCIIPrefix(bytes, length);
    out.append(bytes, plain);
    bytes += plain;
    length -= plain;
    for (; length > 0 && static_cast<uint8_t>(*bytes) >= 0x80; ++bytes, --length) {
      appendUTF8Character(out, static_cast<uint8_t>(*bytes));
    }
  }
  return true;
}

/* Encodes into a set whose characters are the first `limit` of Unicode, one byte each. */
bool encodeDirectly(const char* utf8, size_t length, char32_t limit, uint8_t lossByte, std::string& out) {
  out.reserve(out.size() + length);
  while (length > 0) {
    const size_t plain = countASCIIPrefix(utf8, length);
    out.append(utf8, plain);
    utf8 += plain;
    length -= plain;
    if (length == 0) break;
    const size_t size = measureUTF8Character(utf8, length);
    if (size == 0) return false;
    const char32_t character = decodeUTF8Character(utf8, size);
    const bool fits = character < limit;
    if (!fits && lossByte == 0) return false;
    out.push_back(static_cast<char>(fits ? character : lossByte));
    utf8 += size;
    length -= size;
  }
  return true;
}

bool isConvertedByHand(BQStringEncoding encoding) {
  return encoding == kBQStringEncodingUTF8 || encoding == kBQStringEncodingASCII ||
         encoding == kBQStringEncodingISOLatin1 || isWideEncoding(encoding);
}

}  // namespace

bool decodeText(const uint8_t* bytes, size_t length, BQStringEncoding encoding, std::string& out) {
  const char* text = reinterpret_cast<const char*>(bytes);
  if (encoding == kBQStringEncodingISOLatin1) return decodeLatin1(text, length, out);
  if (isWideEncoding(encoding)) return decodeWideText(bytes, length, encoding, out);
  const EncodingRecord* record = findEncoding(encoding);
  return record != nullptr && convertToUTF8(bytes, length, record->converter(), out);
}

bool encodeText(const char* utf8, size_t length, BQStringEncoding encoding, uint8_t lossByte,
                std::string& out) {
  switch (encoding) {
    case kBQStringEncodingASCII:
      return encodeDirectly(utf8, length, 0x80, lossByte, out);
    case kBQStringEncodingISOLatin1:
      return encodeDirectly(utf8, length, 0x100, lossByte, out);
    default:
      break;
  }
  if (isWideEncoding(encoding)) return encodeWideText(utf8, length, encoding, out);
  const EncodingRecord* record = findEncoding(encoding);
  return record != nullptr && convertFromUTF8(utf8, length, record->converter(), lossByte, out);
}

bool isASCIISuperset(BQStringEncoding encoding) {
  const EncodingRecord* record = findEncoding(encoding);
  return record != nullptr && record->asciiSuperset;
}

}  // namespace bq

const BQString* BQStringConvertEncodingToIANACharSetName(BQStringEncoding encoding) {
  const bq::EncodingRecord* record = bq::findEncoding(encoding);
  return record != nullptr ? reinterpret_cast<const BQString*>(&record->name) : nullptr;
}

BQStringEncoding BQStringConvertIANACharSetNameToEncoding(const BQString* name) {
  if (!bq::isInstance(name, bq::kStringTypeID)) return kBQStringEncodingInvalidId;
  return bq::findEncodingByName({BQStringGetUTF8Ptr(name), static_cast<size_t>(BQStringGetLength(name))});
}

bool BQStringIsEncodingAvailable(BQStringEncoding encoding) {
  const bq::EncodingRecord* record = bq::findEncoding(encoding);
  if (record == nullptr) return false;
  return bq::isConvertedByHand(encoding) || bq::canConvert(record->converter());
}
