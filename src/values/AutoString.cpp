#include "values/AutoString.h"

#include <cstdarg>

#include <utility>

#include <BQ/BQObject.h>
#include <BQ/BQString.h>

#include "values/Construction.h"

namespace vx {

AutoString::AutoString(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  value = bqCreateString(format, arguments);
  va_end(arguments);
}

AutoString::~AutoString() {
  BQRelease(value);
}

void AutoString::setString(const BQString* string) {
  BQRetain(string);
  BQRelease(std::exchange(value, string));
}

void AutoString::append(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const BQString* piece = bqCreateString(format, arguments);
  va_end(arguments);
  if (value == nullptr) {
    value = piece;
    return;
  }
  BQRelease(std::exchange(value, BQStringCreateWithFormat(BQSTR("%@%@"), value, piece)));
  BQRelease(piece);
}

}  // namespace vx
