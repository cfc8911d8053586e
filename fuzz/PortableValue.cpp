#include "Fuzz.h"

#include <cmath>
#include <cstdio>

#include "values/DictIterator.h"

namespace fuzz {
namespace {

constexpr int kMaximumDepth = 24;

/* A name of XML that depends on the text. */
Owned<const BQString> makeName(std::string_view text) {
  static constexpr std::string_view kPieces[] = {"a", "Z", "_", "-", ".", "0", "\xC3\xA9", "\xE6\x97\xA5"};
  std::string name = "n";
  for (char byte : text.substr(0, 16)) name += kPieces[static_cast<uint8_t>(byte) % std::size(kPieces)];
  return makeString(name);
}

Owned<const void> makePortableText(std::string text) {
  std::erase(text, '\r');
  if (text.find_first_not_of(" \t\n") == std::string::npos) text += 'x';
  return makeString(text);
}

Owned<const void> makePortableNumber(const BQNumber* number, bool isReal) {
  int32_t integer = 0;
  double real = 0;
  BQNumberGetValue(number, kBQNumberSInt32Type, &integer);
  if (!isReal) return own(BQNumberCreate(kBQNumberSInt32Type, &integer));
  BQNumberGetValue(number, kBQNumberDoubleType, &real);
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", std::isfinite(real) ? real : 0.5);
  real = std::strtod(text, nullptr);
  return own(BQNumberCreate(kBQNumberDoubleType, &real));
}

/* The text forms write years in four digits. */
Owned<const void> makePortableDate(double time) {
  return own(BQDateCreate(std::abs(time) < 6e10 ? std::floor(time) : 0));
}

/* Spends an allowance, since references can make a value much larger than its document. */
Owned<const void> makePortable(BQTypeRef value, int depth, size_t& allowance) {
  auto* array = static_cast<const BQArray*>(value);
  auto* dictionary = static_cast<const BQDictionary*>(value);
  const VXTypeID kind = VXGetVXTypeIDFromBQType(value);
  std::string_view text = kind == kVXTypeString ? textOf(static_cast<const BQString*>(value)) : "";
  if (depth == kMaximumDepth || allowance <= text.size()) return makePortableText("");
  allowance -= text.size() + 1;
  if (kind == kVXTypeBoolean) return vx::retain(value);
  if (kind == kVXTypeInteger || kind == kVXTypeDouble)
    return makePortableNumber(static_cast<const BQNumber*>(value), kind == kVXTypeDouble);
  if (kind == kVXTypeDate) return makePortableDate(BQDateGetAbsoluteTime(static_cast<const BQDate*>(value)));
  if (kind == kVXTypeData && BQDataGetLength(static_cast<const BQData*>(value)) > 0) return vx::retain(value);
  if (kind == kVXTypeArray) {
    auto copy = own(BQArrayCreateMutable(0));
    for (BQIndex i = 0; i < BQArrayGetCount(array); ++i)
      BQArrayAppendValue(copy.get(),
                         makePortable(BQArrayGetValueAtIndex(array, i), depth + 1, allowance).get());
    return copy;
  }
  if (kind == kVXTypeDictionary && BQDictionaryGetCount(dictionary) > 0) {
    auto copy = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
    for (vx::DictIterator entries(dictionary); entries.hasNext();) {
      BQTypeRef key = entries.nextKey();
      BQDictionarySetValue(copy.get(), makeName(textOf(static_cast<const BQString*>(key))).get(),
                           makePortable(entries.valueFor(key), depth + 1, allowance).get());
    }
    return copy;
  }
  return makePortableText(std::string(text));
}

}  // namespace

Owned<const void> makePortable(BQTypeRef value) {
  size_t allowance = 20000;
  return makePortable(value, 0, allowance);
}

}  // namespace fuzz
