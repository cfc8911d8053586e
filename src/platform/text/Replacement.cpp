#include "platform/text/Replacement.h"

#include "platform/text/EncodingUTF8.h"

namespace bq {

std::string replaceMalformed(std::string_view bytes) {
  std::string result;
  result.reserve(bytes.size());
  while (!bytes.empty()) {
    size_t length = measureUTF8Character(bytes.data(), bytes.size());
    result.append(length == 0 ? "\xEF\xBF\xBD" : bytes.substr(0, length));
    bytes.remove_prefix(length == 0 ? 1 : length);
  }
  return result;
}

}  // namespace bq
