/* The header lines of a request in the form that libcurl takes, in memory that is kept and used again. */
#ifndef BQ_HTTP_HEADER_LIST_H
#define BQ_HTTP_HEADER_LIST_H

#include <string>
#include <string_view>
#include <vector>

#include <curl/curl.h>

namespace bq {

class HeaderList {
 public:
  void clear();

  /* Adds a line. */
  void add(std::string_view name, std::string_view value);

  /* Keeps libcurl from adding a line of its own. */
  void suppress(std::string_view name);

  /* The list, valid until it is changed. Null if it is empty. */
  curl_slist* list();

 private:
  std::string text_;
  std::vector<size_t> starts_;
  std::vector<curl_slist> nodes_;
};

}  // namespace bq

#endif
