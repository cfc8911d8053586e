#include "Fuzz.h"

#include <cmath>
#include <cstdio>
#include <cstring>

namespace fuzz {
namespace {

constexpr int kMaximumDepth = 24;
constexpr size_t kMaximumCount = 12;

class ValueBuilder {
 public:
  ValueBuilder(ByteReader& input, Carrier carrier) : input_(input), carrier_(carrier) {}

  Owned<const void> build(int depth) {
    switch (input_.byte() % (depth < kMaximumDepth && !input_.atEnd() ? 9 : 6)) {
      case 0:
        return own<const void>(makeInteger());
      case 1:
        return own<const void>(makeReal());
      case 2:
        return own<const void>((input_.byte() & 1) != 0 ? kBQBooleanTrue : kBQBooleanFalse);
      case 3:
        return own<const void>(BQDateCreate(makeTime()));
      case 4:
        return makeBytes();
      case 5:
        return own<const void>(makeText().release());
      case 6:
        return makeArray(depth);
      default:
        return makeDictionary(depth);
    }
  }

 private:
  bool isForProtocols() const { return carrier_ == Carrier::protocols; }

  const BQNumber* makeInteger() {
    auto narrow = input_.number<int32_t>();
    if (isForProtocols()) return BQNumberCreate(kBQNumberSInt32Type, &narrow);
    auto wide = input_.number<int64_t>();
    return BQNumberCreate(kBQNumberSInt64Type, &wide);
  }

  const BQNumber* makeReal() {
    auto bits = input_.number<uint64_t>();
    double real;
    std::memcpy(&real, &bits, sizeof real);
    if (isForProtocols()) real = withSixDigits(std::isfinite(real) ? real : 0.5);
    return BQNumberCreate(kBQNumberFloat64Type, &real);
  }

  static double withSixDigits(double real) {
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", real);
    return std::strtod(text, nullptr);
  }

  /* From year 1 to year 9999, which the text forms write in four digits. */
  BQAbsoluteTime makeTime() {
    constexpr int64_t kFirst = -63113904000, kLast = 252455615999;
    return static_cast<double>(kFirst + static_cast<int64_t>(input_.number<uint64_t>() % (kLast - kFirst)));
  }

  Owned<const void> makeBytes() {
    size_t size = input_.byte();
    if (isForProtocols() && size == 0) size = 1;
    std::string bytes(input_.take(size));
    bytes.resize(size);
    return own<const void>(makeData(bytes).release());
  }

  Owned<const BQString> makeText() {
    std::string text;
    for (size_t length = input_.byte(); length > 0 && !input_.atEnd(); --length) appendCharacter(text);
    bool isBlank = text.find_first_not_of(" \t\n") == std::string::npos;
    if (isForProtocols() && isBlank) text += 'x';
    auto string = makeString(text);
    check(string != nullptr);
    return string;
  }

  /* A character that XML can hold; the protocols write a CR as it is, which reads as LF. */
  void appendCharacter(std::string& text) {
    static constexpr std::string_view kOthers[] = {"\xC3\xA9", "\xE6\x97\xA5", "\xF0\x9F\x98\x80",
                                                   "\xC2\x85", "\xEF\xBB\xBF", "\xE2\x80\xA8",
                                                   "]]>",      "<!--"};
    uint8_t byte = input_.byte();
    if (byte >= 0x20 && byte < 0x80) {
      text += static_cast<char>(byte);
    } else if (byte == '\t' || byte == '\n' || (byte == '\r' && !isForProtocols())) {
      text += static_cast<char>(byte);
    } else {
      text += kOthers[byte % std::size(kOthers)];
    }
  }

  Owned<const void> makeArray(int depth) {
    auto array = own(BQArrayCreateMutable(0));
    for (size_t count = input_.byte() % kMaximumCount; count > 0 && !input_.atEnd(); --count)
      BQArrayAppendValue(array.get(), build(depth + 1).get());
    return own<const void>(array.release());
  }

  Owned<const void> makeDictionary(int depth) {
    auto dictionary = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
    size_t count = input_.byte() % kMaximumCount;
    if (isForProtocols() && count == 0) count = 1;
    do {
      auto key = isForProtocols() ? makeName() : makeText();
      BQDictionarySetValue(dictionary.get(), key.get(), build(depth + 1).get());
    } while (--count > 0 && !input_.atEnd());
    return own<const void>(dictionary.release());
  }

  Owned<const BQString> makeName() {
    static constexpr std::string_view kPieces[] = {"a", "Z", "_", "-", ".", "0", "\xC3\xA9", "\xE6\x97\xA5"};
    std::string name = "n";
    for (size_t length = input_.byte() % 16; length > 0; --length)
      name += kPieces[input_.byte() % std::size(kPieces)];
    return makeString(name);
  }

  ByteReader& input_;
  Carrier carrier_;
};

}  // namespace

Owned<const void> buildValue(ByteReader& input, Carrier carrier) {
  return ValueBuilder(input, carrier).build(0);
}

}  // namespace fuzz
