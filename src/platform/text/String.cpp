#include <BQ/BQString.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include <atomic>
#include <charconv>
#include <string>

#include <BQ/BQData.h>

#include "platform/object/Classes.h"
#include "platform/text/CLocale.h"
#include "platform/text/Encoding.h"
#include "platform/text/EncodingUTF8.h"
#include "platform/text/StringHash.h"
#include "platform/text/StringImpl.h"

namespace bq {
namespace {

const BQString* asString(BQTypeRef object) {
  return static_cast<const BQString*>(object);
}

bool equalStrings(BQTypeRef first, BQTypeRef second) {
  return viewOf(asString(first)) == viewOf(asString(second));
}

BQHashCode hashString(BQTypeRef object) {
  return hashText(viewOf(asString(object)));
}

/* Somebody else's bytes have no NUL behind them: who asks for one gets a copy, made when first asked for. */
struct BorrowingString : BQString {
  mutable std::atomic<char*> terminated;
};

const BorrowingString* asBorrowing(const BQString* string) {
  bool borrows = (string->base.flags & kStringBorrowsBytes) != 0;
  return borrows ? static_cast<const BorrowingString*>(string) : nullptr;
}

/* On any thread: the string is shared as an immutable one. */
const char* terminatedBytes(const BorrowingString* string) {
  char* known = string->terminated.load(std::memory_order_acquire);
  if (known != nullptr) return known;
  char* made = static_cast<char*>(allocate(string->length + 1));
  std::memcpy(made, string->bytes, string->length);
  made[string->length] = '\0';
  if (string->terminated.compare_exchange_strong(known, made, std::memory_order_acq_rel)) return made;
  std::free(made);
  return known;
}

void finalizeString(BQTypeRef object) {
  const BQString* string = asString(object);
  if ((string->base.flags & kStringOwnsBytes) != 0) std::free(string->bytes);
  if (const BorrowingString* borrowing = asBorrowing(string)) std::free(borrowing->terminated.load());
}

/* Whether the bytes of a text in an encoding are UTF-8 as they stand. */
bool isUTF8AsItStands(const char* bytes, size_t length, BQStringEncoding encoding) {
  if (encoding == kBQStringEncodingUTF8) return isWellFormedUTF8(bytes, length);
  return isASCIISuperset(encoding) && countASCIIPrefix(bytes, length) == length;
}

const BQString* convertBytes(const char* bytes, size_t length, BQStringEncoding encoding) {
  std::string text;
  if (!decodeText(reinterpret_cast<const uint8_t*>(bytes), length, encoding, text)) return nullptr;
  return makeString(text);
}

bool isLetterOrDigit(char character) {
  char folded = foldCase(character);
  return (folded >= 'a' && folded <= 'z') || (folded >= '0' && folded <= '9');
}

}  // namespace

const BQRuntimeClass kStringClass = {0,          "BQString", nullptr, nullptr, finalizeString, equalStrings,
                                     hashString, nullptr,    nullptr};

const BQString* makeString(std::string_view text) {
  void* memory = allocate(sizeof(BQString) + text.size() + 1);
  char* bytes = static_cast<char*>(memory) + sizeof(BQString);
  if (!text.empty()) std::memcpy(bytes, text.data(), text.size());
  bytes[text.size()] = '\0';
  return new (memory) BQString{{kStringTypeID, 0, 1}, text.size(), bytes};
}

}  // namespace bq

using bq::isString;
using bq::viewOf;

BQTypeID BQStringGetTypeID(void) {
  return bq::kStringTypeID;
}

const BQString* BQStringCreateWithUTF8(const char* bytes, BQIndex length) {
  return BQStringCreateWithBytes(bytes, length, kBQStringEncodingUTF8);
}

const BQString* BQStringCreateWithCString(const char* text, BQStringEncoding encoding) {
  return text == nullptr ? nullptr
                         : BQStringCreateWithBytes(text, static_cast<BQIndex>(std::strlen(text)), encoding);
}

const BQString* BQStringCreateWithBytes(const void* bytes, BQIndex length, BQStringEncoding encoding) {
  if (length < 0 || (bytes == nullptr && length > 0)) return nullptr;
  const char* text = static_cast<const char*>(bytes);
  auto size = static_cast<size_t>(length);
  if (bq::isUTF8AsItStands(text, size, encoding)) return bq::makeString({text, size});
  return encoding == kBQStringEncodingUTF8 ? nullptr : bq::convertBytes(text, size, encoding);
}

const BQString* BQStringCreateWithBytesNoCopy(const void* bytes, BQIndex length, BQStringEncoding encoding) {
  if (length <= 0 || bytes == nullptr) return BQStringCreateWithBytes(bytes, length, encoding);
  const char* text = static_cast<const char*>(bytes);
  auto size = static_cast<size_t>(length);
  if (!bq::isUTF8AsItStands(text, size, encoding)) return BQStringCreateWithBytes(bytes, length, encoding);
  BQRuntimeBase base = {bq::kStringTypeID, bq::kStringBorrowsBytes, 1};
  return new (bq::allocate(sizeof(bq::BorrowingString)))
      bq::BorrowingString{{base, size, const_cast<char*>(text)}, nullptr};
}

const BQString* BQStringCreateFromExternalRepresentation(const BQData* data, BQStringEncoding encoding) {
  if (!bq::isInstance(data, bq::kDataTypeID)) return nullptr;
  const uint8_t* bytes = BQDataGetBytePtr(data);
  BQIndex length = BQDataGetLength(data);
  bool marked =
      encoding == kBQStringEncodingUTF8 && length >= 3 && std::memcmp(bytes, "\xEF\xBB\xBF", 3) == 0;
  if (marked) {
    bytes += 3;
    length -= 3;
  }
  return BQStringCreateWithBytes(bytes, length, encoding);
}

const BQString* BQStringCreateCopy(const BQString* string) {
  if (!isString(string)) return nullptr;
  bool sharable = (string->base.flags & (bq::kStringMutable | bq::kStringBorrowsBytes)) == 0;
  return sharable ? static_cast<const BQString*>(BQRetain(string)) : bq::makeString(viewOf(string));
}

const BQString* BQStringCreateSubstring(const BQString* string, BQRange range) {
  if (!isString(string) || !bq::isValidRange(viewOf(string), range)) return nullptr;
  return bq::makeString(
      viewOf(string).substr(static_cast<size_t>(range.location), static_cast<size_t>(range.length)));
}

BQIndex BQStringGetLength(const BQString* string) {
  return isString(string) ? static_cast<BQIndex>(string->length) : 0;
}

const char* BQStringGetUTF8Ptr(const BQString* string) {
  if (!isString(string)) return nullptr;
  const bq::BorrowingString* borrowing = bq::asBorrowing(string);
  return borrowing == nullptr ? string->bytes : bq::terminatedBytes(borrowing);
}

double BQStringGetDoubleValue(const BQString* string) {
  if (!isString(string)) return 0;
  const char* start = string->bytes;
  const char* end = start + string->length;
  while (start < end && (*start == ' ' || (*start >= '\t' && *start <= '\r'))) ++start;
  bool negative = start < end && *start == '-';
  if (start < end && (*start == '-' || *start == '+')) ++start;
  if (start < end && (*start == '-' || *start == '+')) return 0;
  double value = 0;
  std::from_chars_result result = std::from_chars(start, end, value);
  if (result.ec == std::errc::result_out_of_range) {
    bq::CLocale locale; /* zero or infinity: strtod knows which */
    value = std::strtod(std::string(start, result.ptr).c_str(), nullptr);
  }
  bool isWord = result.ec == std::errc() && !std::isfinite(value);
  if (isWord && result.ptr < end && bq::isLetterOrDigit(*result.ptr))
    return 0; /* "information" is not infinite */
  return negative ? -value : value;
}
