/* How failures of transfers become stream errors. */
#ifndef BQ_HTTP_STREAM_ERROR_H
#define BQ_HTTP_STREAM_ERROR_H

#include <BQ/BQStream.h>

#include <curl/curl.h>

namespace bq {

inline constexpr BQStreamError kNoError = {0, 0};

inline BQStreamError httpError(BQStreamHTTPError error) {
  return {kBQStreamErrorDomainHTTP, error};
}

inline bool isError(BQStreamError error) {
  return error.domain != 0 || error.error != 0;
}

/* The error of a transfer that ended with a code other than CURLE_OK. */
BQStreamError errorOfTransfer(CURLcode code, CURL* handle);

}  // namespace bq

#endif
