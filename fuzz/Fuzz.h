/* What the fuzz targets share. */
#ifndef FUZZ_FUZZ_H
#define FUZZ_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include <BQ/BQ.h>

#include "values/Owned.h"
#include "xml/Text.h"

/* What every target defines: one run over one input. */
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size);

namespace fuzz {

using vx::own;
using vx::Owned;
using vx::textOf;

/* Ends the process where an answer is wrong; the stack that the engine prints says which. */
inline void check(bool isRight) {
  if (!isRight) std::abort();
}

inline std::string_view viewOf(const BQData* data) {
  return {reinterpret_cast<const char*>(BQDataGetBytePtr(data)), static_cast<size_t>(BQDataGetLength(data))};
}

/* A copy, so that a sanitizer sees a read beyond its end. */
inline Owned<const BQData> makeData(std::string_view bytes) {
  return own(BQDataCreate(bytes.data(), static_cast<BQIndex>(bytes.size())));
}

/* Null if the bytes are no UTF-8. */
inline Owned<const BQString> makeString(std::string_view utf8) {
  return own(BQStringCreateWithUTF8(utf8.data(), static_cast<BQIndex>(utf8.size())));
}

inline std::string describe(BQTypeRef object) {
  return std::string(textOf(own(BQCopyDescription(object)).get()));
}

/* Takes an input apart. What is missing at its end reads as 0. */
class ByteReader {
 public:
  ByteReader(const uint8_t* bytes, size_t size) : rest_(reinterpret_cast<const char*>(bytes), size) {}

  bool atEnd() const { return rest_.empty(); }

  uint8_t byte() {
    if (rest_.empty()) return 0;
    auto first = static_cast<uint8_t>(rest_.front());
    rest_.remove_prefix(1);
    return first;
  }

  template <class Number>
  Number number() {
    uint64_t bits = 0;
    for (size_t i = 0; i < sizeof(Number); ++i) bits = bits << 8 | byte();
    return static_cast<Number>(bits);
  }

  /* A number from 0 to `limit` - 1. */
  size_t below(size_t limit) { return number<uint16_t>() % limit; }

  std::string_view take(size_t size) {
    std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(taken.size());
    return taken;
  }

  /* What stands before the next `separator`, which is taken too. */
  std::string_view takeUntil(char separator) {
    size_t end = rest_.find(separator);
    std::string_view taken = take(end);
    take(1);
    return taken;
  }

  std::string_view rest() const { return rest_; }

 private:
  std::string_view rest_;
};

/* What the values may be. */
enum class Carrier {
  /*
   * What both protocols carry whole: no empty or blank text, no empty data or structure, integers of
   * 32 bits, doubles of six digits, dates of whole seconds, members whose names are names of XML.
   */
  protocols,
  /* Whatever a property list can hold. */
  propertyList,
};

/* A value, owned by the caller; never null. */
Owned<const void> buildValue(ByteReader& input, Carrier carrier);

}  // namespace fuzz

#endif
