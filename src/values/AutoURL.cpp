#include "values/AutoURL.h"

#include <BQ/BQObject.h>
#include <BQ/BQString.h>
#include <BQ/BQURL.h>

#include "values/Owned.h"

namespace vx {

AutoURL::AutoURL(const BQString* text) : value(BQURLCreateWithString(text, nullptr)) {}

AutoURL::AutoURL(const char* text)
    : AutoURL(own(BQStringCreateWithCString(text, kBQStringEncodingUTF8)).get()) {}

AutoURL::~AutoURL() {
  BQRelease(value);
}

}  // namespace vx
