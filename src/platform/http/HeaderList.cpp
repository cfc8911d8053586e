#include "platform/http/HeaderList.h"

#include "platform/http/Text.h"

namespace bq {

void HeaderList::clear() {
  text_.clear();
  starts_.clear();
}

void HeaderList::add(std::string_view name, std::string_view value) {
  starts_.push_back(text_.size());
  /* "Name:" without a value removes a line; an empty one is written "Name;". */
  if (trimBlanks(value).empty()) {
    text_.append(name).append(";");
  } else {
    text_.append(name).append(": ").append(value);
  }
  text_.push_back('\0');
}

void HeaderList::suppress(std::string_view name) {
  starts_.push_back(text_.size());
  text_.append(name).append(":");
  text_.push_back('\0');
}

curl_slist* HeaderList::list() {
  nodes_.resize(starts_.size());
  for (size_t i = 0; i < nodes_.size(); ++i) {
    nodes_[i] = {text_.data() + starts_[i], i + 1 < nodes_.size() ? &nodes_[i + 1] : nullptr};
  }
  return nodes_.empty() ? nullptr : nodes_.data();
}

}  // namespace bq
