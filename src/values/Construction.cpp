#include "values/Construction.h"

#include <cstdarg>
#include <cstring>

#include <array>
#include <vector>

#include <BQ/BQArray.h>
#include <BQ/BQDictionary.h>
#include <BQ/BQNumber.h>
#include <BQ/BQObject.h>
#include <BQ/BQString.h>

#include "values/AutoArray.h"
#include "values/Owned.h"

namespace vx {
namespace {

constexpr int kLowestInterned = -3;
constexpr int kInternedCount = 15;

std::array<const BQNumber*, kInternedCount> makeInternedNumbers() {
  std::array<const BQNumber*, kInternedCount> numbers{};
  for (int i = 0; i < kInternedCount; ++i) {
    int value = i + kLowestInterned;
    numbers[static_cast<size_t>(i)] = BQNumberCreate(kBQNumberIntType, &value);
  }
  return numbers;
}

/* The number of pointers before the first null one. */
BQIndex countWords(va_list words) {
  va_list counted;
  va_copy(counted, words);
  BQIndex count = 0;
  while (va_arg(counted, const void*) != nullptr) ++count;
  va_end(counted);
  return count;
}

}  // namespace

const BQString* bqCreateString(const char* format, va_list arguments) {
  if (format == nullptr) return nullptr;
  auto length = static_cast<BQIndex>(std::strlen(format));
  auto wrapped = own(BQStringCreateWithBytesNoCopy(format, length, kBQStringEncodingWestern));
  return BQStringCreateWithFormatAndArguments(wrapped.get(), arguments);
}

BQArray* bqTypeCreateArray(const BQArray* base, ...) {
  va_list words;
  va_start(words, base);
  BQIndex count = countWords(words);
  BQArray* array = base != nullptr ? BQArrayCreateMutableCopy(BQArrayGetCount(base) + count, base)
                                   : BQArrayCreateMutable(count);
  for (; count > 0; --count) BQArrayAppendValue(array, va_arg(words, const void*));
  va_end(words);
  return array;
}

BQDictionary* bqTypeCreateDictionary(const BQDictionary* base, ...) {
  va_list words;
  va_start(words, base);
  BQIndex pairs = countWords(words) / 2;
  BQDictionary* dictionary = base != nullptr
                                 ? BQDictionaryCreateMutableCopy(BQDictionaryGetCount(base) + pairs, base)
                                 : BQDictionaryCreateMutable(pairs, kBQDictionaryCopyStringKeys);
  for (; pairs > 0; --pairs) {
    const void* key = va_arg(words, const void*);
    BQDictionarySetValue(dictionary, key, va_arg(words, const void*));
  }
  va_end(words);
  return dictionary;
}

const BQArray* copyDictionaryKeys(const BQDictionary* dictionary) {
  auto count = static_cast<size_t>(BQDictionaryGetCount(dictionary));
  if (count == 0) return static_cast<const BQArray*>(BQRetain(AutoArray::emptyArray()));
  std::vector<BQTypeRef> keys(count);
  BQDictionaryGetKeysAndValues(dictionary, keys.data(), nullptr);
  return BQArrayCreate(keys.data(), static_cast<BQIndex>(count));
}

const BQNumber* internedInt(int value) {
  static const std::array<const BQNumber*, kInternedCount> sInterned = makeInternedNumbers();
  if (value < kLowestInterned || value >= kLowestInterned + kInternedCount) return nullptr;
  return sInterned[static_cast<size_t>(value - kLowestInterned)];
}

}  // namespace vx
