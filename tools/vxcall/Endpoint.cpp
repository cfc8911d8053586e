#include "Endpoint.h"

#include <BQ/BQURL.h>

#include "common/Text.h"
#include "common/UsageError.h"

namespace tools::vxcall {

BQRef<const BQURL> parseEndpoint(const std::string& text) {
  auto url = BQAdopt(BQURLCreateWithString(makeString(text).get(), nullptr));
  auto scheme = BQAdopt(BQURLCopyScheme(url.get()));
  if (textOf(scheme.get()) != "http" && textOf(scheme.get()) != "https") {
    throw UsageError("'" + maskURL(text, true) + "' is not a URL of http or https");
  }
  auto host = BQAdopt(BQURLCopyHostName(url.get()));
  if (!host) throw UsageError("the URL " + maskURL(text, true) + " names no host");
  return url;
}

}  // namespace tools::vxcall
