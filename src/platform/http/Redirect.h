/* Where a redirect leads. */
#ifndef BQ_HTTP_REDIRECT_H
#define BQ_HTTP_REDIRECT_H

#include <string>

namespace bq {

struct RedirectTarget {
  /* Empty if it is not http or https, or no URL at all. */
  std::string url;
  /* Scheme, host and port are those of the URL that redirects. */
  bool isSameOrigin = false;
};

RedirectTarget resolveRedirect(const std::string& url, const std::string& location);

}  // namespace bq

#endif
