#include "platform/text/Replacement.h"

#include "platform/text/Encoding.h"

namespace bq {
namespace {

/* The length of the well-formed character at the start of `bytes`; 0 if there is none. */
size_t wellFormedLength(std::string_view bytes) {
  for (size_t length = 1; length <= 4 && length <= bytes.size(); ++length) {
    if (isWellFormedUTF8(bytes.data(), length)) return length;
  }
  return 0;
}

}  // namespace

std::string replaceMalformed(std::string_view bytes) {
  std::string result;
  while (!bytes.empty()) {
    size_t length = wellFormedLength(bytes);
    if (length == 0) {
      result += "\xEF\xBF\xBD";
      length = 1;
    } else {
      result.append(bytes.substr(0, length));
    }
    bytes.remove_prefix(length);
  }
  return result;
}

}  // namespace bq
