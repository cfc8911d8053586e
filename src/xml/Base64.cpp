#include "xml/Base64.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <algorithm>
#include <array>
#include <utility>

#include <BQ/BQData.h>
#include <BQ/BQString.h>

#include "values/Owned.h"
#include "xml/Text.h"

namespace vx {
namespace {

constexpr char __BQPLDataEncodeTable[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/* The value of each character: 0 for "=", -1 for what is no base64 character. */
constexpr std::array<signed char, 128> __BQPLDataDecodeTable = [] {
  std::array<signed char, 128> table{};
  table.fill(-1);
  for (int i = 0; i < 64; ++i)
    table[static_cast<size_t>(__BQPLDataEncodeTable[i])] = static_cast<signed char>(i);
  table['='] = 0;
  return table;
}();

constexpr int kDeepestIndent = 8;
constexpr size_t kLongestLine = 76;

/* How the text is laid out. */
struct Layout {
  size_t tabs;
  size_t lineLength;

  explicit Layout(long indent) {
    auto used = static_cast<size_t>(std::clamp<long>(indent, 0, kDeepestIndent));
    tabs = used / 2;
    lineLength = kLongestLine - 4 * used;
  }

  size_t bytesPerLine() const { return lineLength / 4 * 3; }

  size_t textLength(size_t bytes) const {
    size_t characters = (bytes + 2) / 3 * 4;
    size_t lines = (characters + lineLength - 1) / lineLength;
    size_t lineFeeds = bytes / bytesPerLine(); /* none behind a line that padding fills */
    return characters + lines * tabs + lineFeeds;
  }
};

char* encodeGroup(const uint8_t* bytes, char* out) {
  uint32_t group = static_cast<uint32_t>(bytes[0]) << 16 | static_cast<uint32_t>(bytes[1]) << 8 | bytes[2];
  out[0] = __BQPLDataEncodeTable[group >> 18];
  out[1] = __BQPLDataEncodeTable[group >> 12 & 63];
  out[2] = __BQPLDataEncodeTable[group >> 6 & 63];
  out[3] = __BQPLDataEncodeTable[group & 63];
  return out + 4;
}

char* encodeLine(const uint8_t* bytes, size_t length, char* out) {
  for (; length >= 3; bytes += 3, length -= 3) out = encodeGroup(bytes, out);
  if (length == 0) return out;
  uint8_t last[3] = {bytes[0], length == 2 ? bytes[1] : uint8_t{0}, 0};
  encodeGroup(last, out);
  out[3] = '=';
  if (length == 1) out[2] = '=';
  return out + 4;
}

char* encodeText(const uint8_t* bytes, size_t length, const Layout& layout, char* out) {
  while (length > 0) {
    size_t inLine = std::min(length, layout.bytesPerLine());
    std::memset(out, '\t', layout.tabs);
    out = encodeLine(bytes, inLine, out + layout.tabs);
    if (inLine == layout.bytesPerLine()) *out++ = '\n';
    bytes += inLine;
    length -= inLine;
  }
  return out;
}

bool isSpace(char character) {
  return character == ' ' || (character >= '\t' && character <= '\r');
}

/* Collects the bytes of complete groups. */
class Decoder {
 public:
  explicit Decoder(size_t characters)
      : bytes_(static_cast<uint8_t*>(std::malloc(characters / 4 * 3 + 3))), end_(bytes_) {
    if (bytes_ == nullptr) std::abort();
  }
  ~Decoder() { std::free(bytes_); }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  void decode(const char* next, const char* end) {
    while (next < end && *next != '<') {
      if (count_ % 4 == 0) next = decodePlainGroups(next, end);
      if (next < end && *next != '<') take(*next++);
    }
  }

  const BQData* copyData() {
    auto length = end_ - bytes_;
    return BQDataCreateWithOwnedBytes(std::exchange(bytes_, nullptr), length);
  }

 private:
  /* Four characters at a time, as long as all of them are of the alphabet and none is padding. */
  const char* decodePlainGroups(const char* next, const char* end) {
    for (; end - next >= 4; next += 4) {
      int32_t group = 0;
      int32_t invalid = 0;
      for (int i = 0; i < 4; ++i) {
        auto code = static_cast<unsigned char>(next[i]);
        int32_t value = code < 128 && code != '=' ? __BQPLDataDecodeTable[code] : -1;
        invalid |= value;
        group = static_cast<int32_t>(static_cast<uint32_t>(group) << 6 | (static_cast<uint32_t>(value) & 63));
      }
      if (invalid < 0) break;
      padding_ = 0;
      emit(static_cast<uint32_t>(group));
    }
    return next;
  }

  void take(char character) {
    auto code = static_cast<unsigned char>(character);
    if (character == '=') {
      ++padding_;
    } else if (!isSpace(character)) {
      padding_ = 0;
    }
    signed char value = code < 128 ? __BQPLDataDecodeTable[code] : static_cast<signed char>(-1);
    if (value < 0) return;
    ++count_;
    accumulator_ = accumulator_ << 6 | static_cast<uint32_t>(value);
    if (count_ % 4 == 0) emit(accumulator_);
  }

  void emit(uint32_t group) {
    *end_++ = static_cast<uint8_t>(group >> 16);
    if (padding_ < 2) *end_++ = static_cast<uint8_t>(group >> 8);
    if (padding_ < 1) *end_++ = static_cast<uint8_t>(group);
  }

  uint8_t* bytes_;
  uint8_t* end_;
  uint32_t accumulator_ = 0;
  size_t count_ = 0;
  size_t padding_ = 0;
};

}  // namespace

size_t base64Length(const BQData* data, int indent) {
  return Layout(indent).textLength(static_cast<size_t>(BQDataGetLength(data)));
}

char* writeBase64(const BQData* data, int indent, char* out) {
  return encodeText(BQDataGetBytePtr(data), static_cast<size_t>(BQDataGetLength(data)), Layout(indent), out);
}

const BQString* encodeBinaryData(const BQData* data, int indent) {
  auto text = own(BQDataCreateMutable(0));
  _XMLPlistAppendDataUsingBase64(text.get(), data, indent);
  return BQStringCreateWithBytes(BQDataGetBytePtr(text.get()), BQDataGetLength(text.get()),
                                 kBQStringEncodingASCII);
}

void _XMLPlistAppendDataUsingBase64(BQData* out, const BQData* data, long indent) {
  Layout layout(indent);
  auto length = static_cast<size_t>(BQDataGetLength(data));
  BQIndex before = BQDataGetLength(out);
  BQDataSetLength(out, before + static_cast<BQIndex>(layout.textLength(length)));
  auto* start = reinterpret_cast<char*>(BQDataGetMutableBytePtr(out)) + before;
  encodeText(BQDataGetBytePtr(data), length, layout, start);
}

const BQData* decodeBinaryData(std::string_view characters) {
  bool isASCII = std::all_of(characters.begin(), characters.end(),
                             [](char character) { return static_cast<unsigned char>(character) < 0x80; });
  if (!isASCII) return nullptr;
  return __BQPLDataDecode(characters.data(), characters.data() + characters.size());
}

const BQData* __BQPLDataDecode(const char* begin, const char* end) {
  Decoder decoder(static_cast<size_t>(end - begin));
  decoder.decode(begin, end);
  return decoder.copyData();
}

}  // namespace vx
