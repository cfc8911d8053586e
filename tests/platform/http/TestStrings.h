/* Strings of the platform layer in the terms of a test. */
#ifndef TESTS_HTTP_TEST_STRINGS_H
#define TESTS_HTTP_TEST_STRINGS_H

#include <ostream>
#include <string>

#include <BQ/BQ.h>

#include "platform/object/Object.h"

using String = bq::Ref<const BQString>;

inline String string(const std::string& text) {
  return String::adopt(BQStringCreateWithUTF8(text.data(), static_cast<BQIndex>(text.size())));
}

/* The text of a string, or "(null)". */
inline std::string text(const BQString* string) {
  if (string == nullptr) return "(null)";
  return {BQStringGetUTF8Ptr(string), static_cast<size_t>(BQStringGetLength(string))};
}

/* The same, for a string that the test owns from here on. */
inline std::string take(const BQString* string) {
  String owner = String::adopt(string);
  return text(owner.get());
}

inline bq::Ref<const BQURL> url(const std::string& text) {
  return bq::Ref<const BQURL>::adopt(BQURLCreateWithString(string(text).get(), nullptr));
}

#endif
