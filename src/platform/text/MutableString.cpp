#include <cstdlib>
#include <cstring>

#include <string_view>
#include <utility>

#include <BQ/BQString.h>

#include "platform/text/Encoding.h"
#include "platform/text/Replacement.h"
#include "platform/text/StringImpl.h"
#include "platform/text/StringSearch.h"

namespace bq {
namespace {

constexpr uint64_t kSmallestCapacity = 30;

void ensureCapacity(MutableString* string, uint64_t capacity) {
  if (capacity <= string->capacity) return;
  uint64_t grown = string->capacity + string->capacity / 2;
  string->capacity = capacity > grown ? capacity : grown;
  string->bytes = static_cast<char*>(reallocate(string->bytes, string->capacity + 1));
}

/* Makes room for a text, which may be a part of the string itself, and gives where it then stands. */
std::string_view growFor(MutableString* string, std::string_view text) {
  auto offset = reinterpret_cast<uintptr_t>(text.data()) - reinterpret_cast<uintptr_t>(string->bytes);
  bool isInside = offset <= string->capacity;
  ensureCapacity(string, string->length + text.size());
  return isInside ? std::string_view(string->bytes + offset, text.size()) : text;
}

MutableString* makeMutableString(uint64_t capacity) {
  if (capacity < kSmallestCapacity) capacity = kSmallestCapacity;
  char* bytes = static_cast<char*>(allocate(capacity + 1));
  bytes[0] = '\0';
  BQRuntimeBase base = {kStringTypeID, kStringMutable | kStringOwnsBytes, 1};
  return new (allocate(sizeof(MutableString))) MutableString{{base, 0, bytes}, capacity};
}

void setLength(MutableString* string, uint64_t length) {
  string->length = length;
  string->bytes[length] = '\0';
}

void swapTexts(MutableString* first, MutableString* second) {
  std::swap(first->length, second->length);
  std::swap(first->bytes, second->bytes);
  std::swap(first->capacity, second->capacity);
}

bool isSpace(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

}  // namespace

const BQString* freeze(BQString* string) {
  string->base.flags &= static_cast<uint16_t>(~kStringMutable);
  return string;
}

void appendText(MutableString* string, std::string_view text) {
  if (text.size() > string->capacity - string->length) text = growFor(string, text);
  if (!text.empty()) std::memmove(string->bytes + string->length, text.data(), text.size());
  setLength(string, string->length + text.size());
}

}  // namespace bq

using bq::asMutableString;
using bq::isString;
using bq::MutableString;
using bq::viewOf;

BQString* BQStringCreateMutable(BQIndex capacity) {
  return bq::makeMutableString(bq::capacityHint(capacity));
}

BQString* BQStringCreateMutableCopy(const BQString* string) {
  if (!isString(string)) return nullptr;
  MutableString* copy = bq::makeMutableString(string->length);
  bq::appendText(copy, viewOf(string));
  return copy;
}

void BQStringAppend(BQString* string, const BQString* appended) {
  MutableString* target = asMutableString(string);
  if (target == nullptr || !isString(appended)) return;
  bq::appendText(target, viewOf(appended));
}

void BQStringAppendUTF8(BQString* string, const char* bytes, BQIndex length) {
  MutableString* target = asMutableString(string);
  if (target == nullptr || bytes == nullptr || length <= 0) return;
  auto size = static_cast<size_t>(length);
  if (bq::isWellFormedUTF8(bytes, size)) return bq::appendText(target, {bytes, size});
  bq::appendText(target, bq::replaceMalformed({bytes, size}));
}

char* BQStringReserveUTF8(BQString* string, BQIndex size) {
  MutableString* target = asMutableString(string);
  if (target == nullptr || size < 0) return nullptr;
  bq::ensureCapacity(target, target->length + static_cast<uint64_t>(size));
  return target->bytes + target->length;
}

void BQStringCommitUTF8(BQString* string, BQIndex size) {
  MutableString* target = asMutableString(string);
  if (target == nullptr || size < 0 || static_cast<uint64_t>(size) > target->capacity - target->length)
    return;
  bq::setLength(target, target->length + static_cast<uint64_t>(size));
}

void BQStringTruncate(BQString* string, BQIndex length) {
  MutableString* target = asMutableString(string);
  if (target == nullptr || !bq::isValidRange(viewOf(target), BQRangeMake(0, length))) return;
  bq::setLength(target, static_cast<uint64_t>(length));
}

BQIndex BQStringFindAndReplace(BQString* string, const BQString* text, const BQString* replacement,
                               BQRange range, BQStringCompareOptions options) {
  MutableString* target = asMutableString(string);
  if (target == nullptr || !isString(text) || !isString(replacement)) return 0;
  if (text->length == 0 || !bq::isValidRange(viewOf(target), range)) return 0;
  bool ignoreCase = (options & kBQCompareCaseInsensitive) != 0;
  std::string_view whole = viewOf(target);
  std::string_view searched = whole.substr(0, static_cast<size_t>(range.location + range.length));
  size_t position = bq::findText(searched, viewOf(text), static_cast<size_t>(range.location), ignoreCase);
  if (position == std::string_view::npos) return 0;
  MutableString* result = bq::makeMutableString(target->length);
  BQIndex count = 0;
  size_t copied = 0;
  while (position != std::string_view::npos) {
    bq::appendText(result, whole.substr(copied, position - copied));
    bq::appendText(result, viewOf(replacement));
    copied = position + text->length;
    ++count;
    position = bq::findText(searched, viewOf(text), copied, ignoreCase);
  }
  bq::appendText(result, whole.substr(copied));
  bq::swapTexts(target, result);
  BQRelease(result);
  return count;
}

void BQStringTrimWhitespace(BQString* string) {
  MutableString* target = asMutableString(string);
  if (target == nullptr) return;
  std::string_view text = viewOf(target);
  while (!text.empty() && bq::isSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && bq::isSpace(text.back())) text.remove_suffix(1);
  std::memmove(target->bytes, text.data(), text.size());
  bq::setLength(target, text.size());
}
