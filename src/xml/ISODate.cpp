#include "xml/ISODate.h"

#include <cstdint>
#include <cstring>

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

#include <BQ/BQDate.h>
#include <BQ/BQString.h>
#include <VX/VXDate.h>

#include "xml/Text.h"

namespace vx {
namespace {

int digitOf(char character) {
  return character >= '0' && character <= '9' ? character - '0' : 0;
}

/* A number with at least `digits` digits; a negative one as its 32-bit complement. */
char* writeNumber(char* out, int32_t number, size_t digits) {
  char text[16];
  auto result = std::to_chars(text, text + sizeof text, static_cast<uint32_t>(number));
  auto length = static_cast<size_t>(result.ptr - text);
  for (size_t i = length; i < digits; ++i) *out++ = '0';
  std::memcpy(out, text, length);
  return out + length;
}

/* Reads the fields of a date in their order. What lies behind the end of the text reads as 0. */
class DateReader {
 public:
  DateReader(const char* text, size_t length) : next_(text), end_(text + length) {}

  BQAbsoluteTime read() {
    readFields();
    BQAbsoluteTime time = BQGregorianDateGetAbsoluteTime(date_);
    return time - offsetSeconds_;
  }

 private:
  bool atEnd() const { return next_ == end_; }

  int readNumber(int digits) {
    int value = 0;
    for (int i = 0; i < digits; ++i) value = 10 * value + (atEnd() ? 0 : digitOf(*next_++));
    return value;
  }

  bool skip(char character) {
    if (atEnd() || *next_ != character) return false;
    ++next_;
    return true;
  }

  void readFields() {
    if (atEnd()) return;
    date_.year = readNumber(4);
    skip('-');
    if (atEnd()) return;
    date_.month = static_cast<int8_t>(readNumber(2));
    skip('-');
    if (atEnd()) return;
    date_.day = static_cast<int8_t>(readNumber(2));
    if (atEnd()) return;
    char separator = *next_++;
    if ((separator != 'T' && separator != 'Z') || !readTime() || separator != 'T') return;
    readOffset();
  }

  /* False when the text ends here. */
  bool readTime() {
    if (atEnd()) return false;
    date_.hour = static_cast<int8_t>(readNumber(2));
    if (atEnd()) return false;
    if (*next_++ != ':') return !atEnd();
    if (atEnd()) return false;
    date_.minute = static_cast<int8_t>(readNumber(2));
    if (atEnd()) return false;
    if (*next_++ == ':') readSeconds();
    return !atEnd();
  }

  void readSeconds() {
    date_.second = readNumber(2);
    if (!skip('.') && !skip(',')) return;
    for (double unit = 0.1; !atEnd() && *next_ >= '0' && *next_ <= '9'; unit /= 10) {
      date_.second += digitOf(*next_++) * unit;
    }
  }

  void readOffset() {
    bool negative = skip('-');
    if (!negative) skip('+');
    if (end_ - next_ <= 2) return;
    int seconds = readNumber(2) * 3600;
    if (skip(':')) seconds += readNumber(2) * 60;
    offsetSeconds_ = negative ? -seconds : seconds;
  }

  const char* next_;
  const char* end_;
  BQGregorianDate date_ = {0, 0, 0, 0, 0, 0};
  int offsetSeconds_ = 0;
};

/* The text in ASCII: each character beyond it as one "x". */
std::string toASCII(std::string_view text) {
  std::string result;
  for (char character : text) {
    auto byte = static_cast<unsigned char>(character);
    if (byte < 0x80) {
      result += character;
    } else if (byte >= 0xC0) {
      result += 'x';
    }
  }
  return result;
}

}  // namespace

char* writeISODate(const BQDate* date, bool compact, char* out) {
  BQGregorianDate fields = BQAbsoluteTimeGetGregorianDate(BQDateGetAbsoluteTime(date));
  out = writeNumber(out, fields.year, 4);
  if (!compact) *out++ = '-';
  out = writeNumber(out, fields.month, 2);
  if (!compact) *out++ = '-';
  out = writeNumber(out, fields.day, 2);
  *out++ = 'T';
  out = writeNumber(out, fields.hour, 2);
  *out++ = ':';
  out = writeNumber(out, fields.minute, 2);
  *out++ = ':';
  out = writeNumber(out, static_cast<int32_t>(fields.second), 2);
  *out++ = 'Z';
  return out;
}

const BQString* isoEncodeDate(const BQDate* date, unsigned char compact) {
  char text[kISODateRoom];
  return BQStringCreateWithBytes(text, writeISODate(date, compact != 0, text) - text, kBQStringEncodingASCII);
}

const BQDate* isoDecodeDate(std::string_view bytes) {
  bool isASCII = std::all_of(bytes.begin(), bytes.end(),
                             [](char character) { return static_cast<unsigned char>(character) < 0x80; });
  if (isASCII) return BQDateCreate(DateReader(bytes.data(), bytes.size()).read());
  std::string converted = toASCII(bytes);
  return BQDateCreate(DateReader(converted.data(), converted.size()).read());
}

const char* read2SInt8(const char* p, signed char* out) {
  *out = static_cast<signed char>(10 * digitOf(p[0]) + digitOf(p[1]));
  return p + 2;
}

}  // namespace vx

int vxBQDateToISO8601String(char* buffer, unsigned long size, const BQDate* date, unsigned char compact) {
  char text[vx::kISODateRoom];
  auto length = static_cast<size_t>(vx::writeISODate(date, compact != 0, text) - text);
  if (buffer != nullptr && size > 0) {
    size_t copied = std::min<size_t>(length, size - 1);
    std::memcpy(buffer, text, copied);
    buffer[copied] = '\0';
  }
  return static_cast<int>(length);
}

const BQDate* vxCreateDateFromISO8601(const unsigned char* text, unsigned long length) {
  const char* characters = text == nullptr ? "" : reinterpret_cast<const char*>(text);
  return BQDateCreate(vx::DateReader(characters, text == nullptr ? 0 : length).read());
}
