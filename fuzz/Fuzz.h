/* Shared by the fuzz targets. */
#ifndef FUZZ_FUZZ_H
#define FUZZ_FUZZ_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include <VX/VX.h>

#include "values/Owned.h"
#include "xml/Text.h"

namespace fuzz {

using vx::own;
using vx::Owned;
using vx::textOf;

/* No header may contain these. */
constexpr std::string_view kHeaderEnds("\r\n\0", 3);

/* Ends the process if an answer is wrong; the stack that the engine prints says which. */
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

/* Null if the bytes are not UTF-8. */
inline Owned<const BQString> makeString(std::string_view utf8) {
  return own(BQStringCreateWithUTF8(utf8.data(), static_cast<BQIndex>(utf8.size())));
}

/* Calls a function that returns either a result or, through its last parameter, an error. */
template <class Error, class Function, class... Arguments>
auto resultOf(Function* function, Arguments... arguments) {
  const Error* error = nullptr;
  auto result = own(function(arguments..., &error));
  check((result == nullptr) == (own(error) != nullptr));
  return result;
}

/* Takes an input apart. Reads 0 beyond its end. */
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : rest_(bytes) {}

  std::string_view rest() const { return rest_; }

  std::string_view take(size_t size) {
    std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(taken.size());
    return taken;
  }

  /* Takes what precedes the next `separator`, and drops that. */
  std::string_view takeUntil(char separator) {
    std::string_view taken = take(rest_.find(separator));
    take(1);
    return taken;
  }

  uint8_t byte() {
    std::string_view taken = take(1);
    return taken.empty() ? 0 : static_cast<uint8_t>(taken[0]);
  }

 private:
  std::string_view rest_;
};

/*
 * The closest value that all protocols carry without loss: no empty or blank text, no CR, no empty data or
 * structure, integers of 32 bits, doubles of six digits, dates of whole seconds, members with XML names.
 */
Owned<const void> makePortable(BQTypeRef value);

/* A request with the value as both parameters, and a reply with it, read back as they were written. */
void checkRoundTrip(const BQString* protocol, BQTypeRef value);

/*
 * Reads a document in both protocols, with the same description. What was read is written, and its
 * portable form reads back. An odd first byte of the input makes the rest a request, an even one a reply.
 */
void checkDocument(ByteReader input, const BQString* protocol, const BQString* other);

/* Every target defines one run over one input. */
void run(ByteReader input);

}  // namespace fuzz

#endif
