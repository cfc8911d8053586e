/* Short ways to make platform values in tests and to look into them. */
#ifndef ORVANE_TESTS_SUPPORT_PLATFORM_VALUES_H
#define ORVANE_TESTS_SUPPORT_PLATFORM_VALUES_H

#include <BQ/BQ.h>
#include <pthread.h>

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include "platform/object/Object.h"

namespace values {

template <class T>
bq::Ref<T> own(T* object) {
  return bq::Ref<T>::adopt(object);
}

/* A reference to an object of any class. */
using Value = bq::Ref<const void>;

/* The text of a string, NUL bytes included; "(none)" for null. */
inline std::string text(const BQString* string) {
  if (string == nullptr) return "(none)";
  return {BQStringGetUTF8Ptr(string), static_cast<size_t>(BQStringGetLength(string))};
}
template <class T>
std::string text(const bq::Ref<T>& string) {
  return text(string.get());
}

inline bq::Ref<const BQString> string(std::string_view text) {
  return own(BQStringCreateWithUTF8(text.data(), static_cast<BQIndex>(text.size())));
}

inline bq::Ref<BQString> mutableString(std::string_view text) {
  return own(BQStringCreateMutableCopy(string(text).get()));
}

/* The bytes of data; "(none)" for null. */
inline std::string bytes(const BQData* data) {
  if (data == nullptr) return "(none)";
  return {reinterpret_cast<const char*>(BQDataGetBytePtr(data)), static_cast<size_t>(BQDataGetLength(data))};
}

inline bq::Ref<const BQNumber> integer(int64_t number) {
  return own(BQNumberCreate(kBQNumberSInt64Type, &number));
}

inline bq::Ref<const BQNumber> real(double number) {
  return own(BQNumberCreate(kBQNumberFloat64Type, &number));
}

inline bq::Ref<BQArray> array(std::initializer_list<BQTypeRef> values) {
  BQArray* result = BQArrayCreateMutable(0);
  for (BQTypeRef value : values) BQArrayAppendValue(result, value);
  return own(result);
}

inline bq::Ref<BQDictionary> dictionary(std::initializer_list<std::pair<BQTypeRef, BQTypeRef>> pairs) {
  BQDictionary* result = BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys);
  for (const auto& [key, value] : pairs) BQDictionarySetValue(result, key, value);
  return own(result);
}

/* Arrays in dictionaries in arrays, `depth` levels around a leaf, each holding the one below so many times.
 */
inline Value nest(int depth, BQTypeRef leaf, int times = 1) {
  Value nested = Value::retain(leaf);
  for (int i = 0; i < depth; ++i) {
    BQTypeRef inner = nested.get(), twin = times == 2 ? inner : nullptr;
    nested = i % 2 == 0 ? Value(array({inner, twin}))
                        : Value(dictionary({{BQSTR("k"), inner}, {BQSTR("twin"), twin}}));
  }
  return nested;
}

inline std::string describe(BQTypeRef object) {
  return text(own(BQCopyDescription(object)));
}

/* The frames of code that sanitizers watch, or that is not optimised, are some times larger. */
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(ORVANE_UNOPTIMISED)
inline constexpr size_t kSmallStack = 2048 << 10;
#else
inline constexpr size_t kSmallStack = 256 << 10;
#endif

/* Runs a function on a thread whose stack has 256 KiB. */
inline void runOnSmallStack(std::function<void()> function) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kSmallStack);
  auto body = [](void* context) -> void* {
    (*static_cast<std::function<void()>*>(context))();
    return nullptr;
  };
  pthread_t thread;
  if (pthread_create(&thread, &attributes, body, &function) == 0) pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

}  // namespace values

#endif
