/* Holds a string. */
#ifndef VX_VALUES_AUTO_STRING_H
#define VX_VALUES_AUTO_STRING_H

#include "values/AutoCountable.h"

namespace vx {

class AutoString : public AutoCountable {
 public:
  AutoString() = default;
  /* Takes over the caller's reference; may be null. */
  explicit AutoString(const BQString* string) : value(string) {}
  /* A formatted text (see bqCreateString). */
  explicit AutoString(const char* format, ...);
  AutoString(const AutoString&) = delete;
  ~AutoString() override;

  /* True when it holds null; the empty string is not empty. */
  bool isEmpty() const override { return value == nullptr; }
  BQTypeRef getRef() override { return value; }

  const BQString* get() const { return value; }

  /* Retains the new value before the old one is released, so that it may be the same. */
  void setString(const BQString* string);
  /* Appends a formatted text. */
  void append(const char* format, ...);

 private:
  const BQString* value = nullptr;
};

}  // namespace vx

#endif
