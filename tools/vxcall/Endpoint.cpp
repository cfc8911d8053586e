#include "Endpoint.h"

#include <BQ/BQURL.h>

#include "common/Text.h"
#include "common/UsageError.h"

namespace tools::vxcall {

Ref<const BQURL> parseEndpoint(const std::string& text) {
  auto url = Ref<const BQURL>::adopt(BQURLCreateWithString(makeString(text).get(), nullptr));
  auto scheme = Ref<const BQString>::adopt(BQURLCopyScheme(url.get()));
  if (textOf(scheme.get()) != "http" && textOf(scheme.get()) != "https") {
    throw UsageError("'" + singleLine(text) + "' is not a URL of http or https");
  }
  auto host = Ref<const BQString>::adopt(BQURLCopyHostName(url.get()));
  if (!host) throw UsageError("the URL " + singleLine(text) + " names no host");
  return url;
}

}  // namespace tools::vxcall
