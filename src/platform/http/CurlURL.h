/* libcurl's URL parser with an owner. */
#ifndef BQ_HTTP_CURL_URL_H
#define BQ_HTTP_CURL_URL_H

#include <memory>
#include <string>

#include <curl/curl.h>

namespace bq {

class CurlURL {
 public:
  CurlURL() : url_(curl_url()) {}

  CURLUcode set(CURLUPart part, const char* text, unsigned flags = 0) {
    return curl_url_set(url_.get(), part, text, flags);
  }

  /* Empty if the part is not there. */
  std::string get(CURLUPart part, unsigned flags = 0) const {
    char* text = nullptr;
    if (curl_url_get(url_.get(), part, &text, flags) != CURLUE_OK) return {};
    std::string result(text);
    curl_free(text);
    return result;
  }

 private:
  struct Deleter {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
  };
  std::unique_ptr<CURLU, Deleter> url_;
};

}  // namespace bq

#endif
