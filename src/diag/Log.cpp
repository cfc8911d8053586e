#include "diag/Log.h"

#include <cstdarg>
#include <cstdio>

#include <unistd.h>

#include <BQ/BQData.h>
#include <BQ/BQObject.h>
#include <BQ/BQPropertyList.h>
#include <BQ/BQString.h>

#include "diag/Switches.h"
#include "values/Construction.h"
#include "values/Owned.h"

namespace vx {
namespace {

/* The text in the encoding of the output, with "." for what it lacks. */
Owned<const BQData> outputBytes(const BQString* text) {
  return own(BQStringCreateExternalRepresentation(text, kBQStringEncodingWestern, '.'));
}

const char* charsOf(const BQData* data) {
  return reinterpret_cast<const char*>(BQDataGetBytePtr(data));
}

int lengthOf(const BQData* data) {
  return static_cast<int>(BQDataGetLength(data));
}

}  // namespace

int _vxLogf(const char* format, ...) {
  if (gVXDebug == 0) return 0;
  va_list arguments;
  va_start(arguments, format);
  auto text = own(vxCreateString(format, arguments));
  va_end(arguments);
  if (auto bytes = outputBytes(text.get())) {
    std::fprintf(stderr, "VX (%d): %.*s\n", static_cast<int>(getpid()), lengthOf(bytes.get()),
                 charsOf(bytes.get()));
  } else {
    BQShow(text.get());
  }
  return 0;
}

void vxPrintf(const BQString* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  auto text = own(BQStringCreateWithFormatAndArguments(format, arguments));
  va_end(arguments);
  if (auto bytes = outputBytes(text.get())) {
    std::fprintf(stderr, "%.*s", lengthOf(bytes.get()), charsOf(bytes.get()));
  } else {
    BQShow(text.get());
  }
}

void vxDumpDict(const char* label, const BQDictionary* dictionary) {
  auto data = own(BQPropertyListCreateXMLData(dictionary));
  if (data == nullptr) {
    auto description = own(BQCopyDescription(dictionary));
    data = own(BQStringCreateExternalRepresentation(description.get(), kBQStringEncodingUTF8, 0));
  }
  std::fprintf(stderr, "%s ---\n--------------\n%.*s\n--------------\n", label, lengthOf(data.get()),
               charsOf(data.get()));
}

const BQString* vxCreateString(const char* format, va_list arguments) {
  return bqCreateString(format, arguments);
}

}  // namespace vx
