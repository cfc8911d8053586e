#include "platform/http/Redirect.h"

#include "platform/http/CurlURL.h"
#include "platform/http/Text.h"

namespace bq {
namespace {

bool isSamePart(const CurlURL& first, const CurlURL& second, CURLUPart part) {
  return equalsIgnoringCase(first.get(part, CURLU_DEFAULT_PORT), second.get(part, CURLU_DEFAULT_PORT));
}

}  // namespace

RedirectTarget resolveRedirect(const std::string& url, const std::string& location) {
  CurlURL from, to;
  from.set(CURLUPART_URL, url.c_str());
  from.set(CURLUPART_FRAGMENT, nullptr);
  to.set(CURLUPART_URL, from.get(CURLUPART_URL).c_str());
  /* Blanks and other characters that servers forget to escape are escaped. */
  if (to.set(CURLUPART_URL, location.c_str(), CURLU_URLENCODE) != CURLUE_OK) return {};
  std::string scheme = to.get(CURLUPART_SCHEME);
  if (scheme != "http" && scheme != "https") return {};
  bool isSameOrigin = isSamePart(from, to, CURLUPART_SCHEME) && isSamePart(from, to, CURLUPART_HOST) &&
                      isSamePart(from, to, CURLUPART_PORT);
  return {to.get(CURLUPART_URL), isSameOrigin};
}

}  // namespace bq
