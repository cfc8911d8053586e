#include "xml/NameCache.h"

#include <string_view>

#include <BQ/BQString.h>

#include "xml/Text.h"

namespace vx {

Owned<const BQString> NameCache::copyOf(const BQString* name) {
  std::string_view text = textOf(name);
  if (text.empty()) return retain(name == nullptr ? nullptr : BQSTR(""));
  Owned<const BQString>& cached = names_[(text.size() * 7 + static_cast<unsigned char>(text.back())) % kSize];
  if (textOf(cached.get()) != text) {
    cached = own(BQStringCreateSubstring(name, BQRangeMake(0, BQStringGetLength(name))));
  }
  return retain(cached.get());
}

}  // namespace vx
