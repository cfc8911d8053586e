#include "platform/text/EncodingConverter.h"

#include <errno.h>
#include <iconv.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "platform/text/EncodingUTF8.h"

namespace bq {

namespace {

constexpr size_t kConversionFailed = static_cast<size_t>(-1);

enum class Outcome { kDone, kIncomplete, kRejected };

/* A conversion descriptor that is kept open, since opening one can load a module. */
class Converter {
 public:
  Converter() = default;
  ~Converter() { close(); }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  /* Opens a conversion, or puts one that is open back to its initial state. */
  bool open(const char* to, const char* from) {
    if (descriptor_ != closed() && to == to_ && from == from_) {
      iconv(descriptor_, nullptr, nullptr, nullptr, nullptr);
      return true;
    }
    close();
    descriptor_ = iconv_open(to, from);
    to_ = to;
    from_ = from;
    return descriptor_ != closed();
  }

  /* Converts until the input ends or is rejected; `input` then begins with what was rejected. */
  Outcome convert(std::string_view& input, std::string& out) {
    /* The interface of the C library is not const-correct; the input is only read. */
    char* next = const_cast<char*>(input.data());
    size_t left = input.size();
    const Outcome outcome = run(&next, &left, out);
    input = {next, left};
    return outcome;
  }

  /* Writes a character that is held back for composition, and returns to the initial state. */
  bool flush(std::string& out) { return run(nullptr, nullptr, out) == Outcome::kDone; }

 private:
  static iconv_t closed() { return reinterpret_cast<iconv_t>(-1); }

  void close() {
    if (descriptor_ != closed()) iconv_close(descriptor_);
    descriptor_ = closed();
  }

  Outcome run(char** next, size_t* left, std::string& out) {
    for (;;) {
      char chunk[4096];
      char* end = chunk;
      size_t room = sizeof chunk;
      const size_t result = iconv(descriptor_, next, left, &end, &room);
      const int error = errno;
      out.append(chunk, end);
      if (result != kConversionFailed) return Outcome::kDone;
      if (error == EINVAL) return Outcome::kIncomplete;
      if (error != E2BIG || end == chunk) return Outcome::kRejected;
    }
  }

  iconv_t descriptor_ = closed();
  const char* to_ = nullptr;
  const char* from_ = nullptr;
};

constexpr const char* kUTF8Name = "UTF-8";

thread_local Converter decoder;
thread_local Converter encoder;

/* The position of the first of the tag characters U+E0000 to U+E007F, or the size. */
size_t findTagCharacter(std::string_view text) {
  for (size_t position = text.find('\xF3'); position != text.npos;
       position = text.find('\xF3', position + 1)) {
    const std::string_view start = text.substr(position, 3);
    if (start == "\xF3\xA0\x80" || start == "\xF3\xA0\x81") return position;
  }
  return text.size();
}

class LossyEncoder {
 public:
  LossyEncoder(Converter& converter, uint8_t lossByte, std::string& out)
      : converter_(converter), lossByte_(lossByte), out_(out) {}

  /*
   * The C library drops tag characters in silence where an encoding lacks them, so each is converted
   * by itself and looked after.
   */
  bool encode(std::string_view text) {
    while (!text.empty()) {
      const size_t tag = findTagCharacter(text);
      if (!encodeRun(text.substr(0, tag))) return false;
      text.remove_prefix(tag);
      if (text.empty()) break;
      const size_t size = std::min<size_t>(4, text.size());
      if (!encodeTagCharacter(text.substr(0, size))) return false;
      text.remove_prefix(size);
    }
    return converter_.flush(out_);
  }

 private:
  bool encodeRun(std::string_view text) {
    while (!text.empty()) {
      switch (converter_.convert(text, out_)) {
        case Outcome::kDone:
          return true;
        case Outcome::kIncomplete:
          return false;
        case Outcome::kRejected:
          break;
      }
      const size_t size = measureUTF8Character(text.data(), text.size());
      if (size == 0 || !appendLoss()) return false;
      text.remove_prefix(size);
    }
    return true;
  }

  bool encodeTagCharacter(std::string_view character) {
    if (!converter_.flush(out_)) return false;
    const size_t before = out_.size();
    return encodeRun(character) && (out_.size() > before || appendLoss());
  }

  bool appendLoss() {
    if (lossByte_ == 0) return false;
    const char byte = static_cast<char>(lossByte_);
    std::string_view character(&byte, 1);
    /* Through the converter, for encodings with shift states and those whose ASCII stands elsewhere. */
    if (lossByte_ < 0x80 && converter_.convert(character, out_) == Outcome::kDone) return true;
    if (!converter_.flush(out_)) return false;
    out_.push_back(byte);
    return true;
  }

  Converter& converter_;
  uint8_t lossByte_;
  std::string& out_;
};

}  // namespace

bool canConvert(const char* name) {
  return decoder.open(kUTF8Name, name) && encoder.open(name, kUTF8Name);
}

bool convertToUTF8(const uint8_t* bytes, size_t length, const char* name, std::string& out) {
  if (!decoder.open(kUTF8Name, name)) return false;
  std::string_view input(reinterpret_cast<const char*>(bytes), length);
  out.reserve(out.size() + length);
  return decoder.convert(input, out) == Outcome::kDone && decoder.flush(out);
}

bool convertFromUTF8(const char* utf8, size_t length, const char* name, uint8_t lossByte, std::string& out) {
  if (!encoder.open(name, kUTF8Name)) return false;
  out.reserve(out.size() + length);
  return LossyEncoder(encoder, lossByte, out).encode({utf8, length});
}

}  // namespace bq
