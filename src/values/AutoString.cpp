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
  value_ = bqCreateString(format, arguments);
  va_end(arguments);
}

AutoString::~AutoString() {
  BQRelease(value_);
}

void AutoString::setString(const BQString* value) {
  BQRetain(value);
  BQRelease(std::exchange(value_, value));
}

void AutoString::append(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const BQString* piece = bqCreateString(format, arguments);
  va_end(arguments);
  if (value_ == nullptr) {
    value_ = piece;
    return;
  }
  BQRelease(std::exchange(value_, BQStringCreateWithFormat(BQSTR("%@%@"), value_, piece)));
  BQRelease(piece);
}

}  // namespace vx
