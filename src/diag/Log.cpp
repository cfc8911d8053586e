#include "diag/Log.h"

#include <cstdarg>
#include <cstdio>
#include <string>
#include <string_view>

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

/* The text in the encoding of the output, with escapes for control characters and "." for what it lacks. */
Owned<const BQData> outputBytes(const BQString* text, BQStringEncoding encoding = kBQStringEncodingWestern) {
  auto shown = own(BQStringCreateForDisplay(text, true));
  return own(BQStringCreateExternalRepresentation(shown.get(), encoding, '.'));
}

const char* charsOf(const BQData* data) {
  return reinterpret_cast<const char*>(BQDataGetBytePtr(data));
}

/*
 * As one write, so that threads do not cut into each other's texts: formatted output that is longer than
 * the buffer of the C library would be several.
 */
void writeText(std::string_view before, const BQData* text, std::string_view after) {
  std::string_view view(charsOf(text), static_cast<size_t>(BQDataGetLength(text)));
  std::string line(before);
  line.append(view).append(after);
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace

int _vxLogf(const char* format, ...) {
  if (gVXDebug == 0) return 0;
  va_list arguments;
  va_start(arguments, format);
  auto text = own(vxCreateString(format, arguments));
  va_end(arguments);
  if (auto bytes = outputBytes(text.get())) {
    writeText("VX (" + std::to_string(getpid()) + "): ", bytes.get(), "\n");
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
    writeText("", bytes.get(), "");
  } else {
    BQShow(text.get());
  }
}

void vxDumpDict(const char* label, const BQDictionary* dictionary) {
  auto data = own(BQPropertyListCreateXMLData(dictionary));
  auto text =
      own(data != nullptr ? BQStringCreateFromExternalRepresentation(data.get(), kBQStringEncodingUTF8)
                          : BQCopyDescription(dictionary));
  writeText(std::string(label) + " ---\n--------------\n",
            outputBytes(text.get(), kBQStringEncodingUTF8).get(), "\n--------------\n");
}

Owned<const BQString> onOneLine(const BQString* text) {
  return own(BQStringCreateForDisplay(text, false));
}

const BQString* vxCreateString(const char* format, va_list arguments) {
  return bqCreateString(format, arguments);
}

}  // namespace vx
