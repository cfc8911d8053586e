/* Holds a URL. */
#ifndef VX_VALUES_AUTO_URL_H
#define VX_VALUES_AUTO_URL_H

#include "values/AutoCountable.h"
#include "values/AutoString.h"

namespace vx {

class AutoURL : public AutoCountable {
 public:
  /* The URL of a text, taken literally; null if the text is no URL. */
  explicit AutoURL(const BQString* text);
  explicit AutoURL(const char* text);
  explicit AutoURL(const AutoString& text) : AutoURL(text.get()) {}
  AutoURL(const AutoURL&) = delete;
  ~AutoURL() override;

  bool isEmpty() const override { return value == nullptr; }
  BQTypeRef getRef() override { return value; }

  const BQURL* get() const { return value; }

 private:
  const BQURL* value;
};

}  // namespace vx

#endif
