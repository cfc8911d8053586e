#include "xml/NameCache.h"

#include <string_view>

#include <BQ/BQString.h>

#include "xml/Text.h"

namespace vx {

Owned<const BQString> NameCache::copyOf(std::string_view text) {
  if (text.empty()) return own(BQSTR(""));
  Owned<const BQString>& cached = names_[(text.size() * 7 + static_cast<unsigned char>(text.back())) % kSize];
  if (textOf(cached.get()) != text) {
    cached = own(BQStringCreateWithUTF8(text.data(), static_cast<BQIndex>(text.size())));
  }
  return retain(cached.get());
}

}  // namespace vx
