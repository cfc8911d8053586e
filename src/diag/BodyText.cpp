#include "diag/BodyText.h"

#include <algorithm>

#include <BQ/BQData.h>
#include <BQ/BQString.h>

#include "values/Owned.h"

namespace vx {

const BQString* prettyPrintXML(const BQData* data, unsigned long encoding) {
  auto copy = own(BQDataCreateMutableCopy(data));
  if (copy == nullptr) return nullptr;
  uint8_t* bytes = BQDataGetMutableBytePtr(copy.get());
  BQIndex length = BQDataGetLength(copy.get());
  std::replace(bytes, bytes + length, uint8_t{'\r'}, uint8_t{'\n'});
  const BQString* text = BQStringCreateWithBytes(bytes, length, static_cast<BQStringEncoding>(encoding));
  if (text == nullptr) text = BQStringCreateWithBytes(bytes, length, kBQStringEncodingISOLatin1);
  if (text != nullptr) return text;
  std::transform(bytes, bytes + length, bytes,
                 [](uint8_t byte) { return static_cast<uint8_t>(byte & 0x7F); });
  return BQStringCreateWithBytes(bytes, length, kBQStringEncodingASCII);
}

}  // namespace vx
