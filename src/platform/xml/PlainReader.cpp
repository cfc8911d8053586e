#include "platform/xml/PlainReader.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string>

#include "platform/text/EncodingUTF8.h"
#include "platform/xml/StartTag.h"

namespace bq {
namespace {

/* More are left to the parser, which does not compare each with each. */
constexpr size_t kMostAttributes = 16;

/* Where a character of ASCII may stand without further thought. */
enum Place : uint8_t {
  kBlank = 1 << 0,
  kNameStart = 1 << 1,
  kInName = 1 << 2,
  kInText = 1 << 3,
  kInValue = 1 << 4,
};

constexpr std::array<uint8_t, 256> makePlaces() {
  std::array<uint8_t, 256> places{};
  auto allow = [&places](std::string_view characters, uint8_t place) {
    for (char c : characters) places[static_cast<unsigned char>(c)] |= place;
  };
  for (size_t c = 0x20; c < 0x80; ++c) places[c] = kInText | kInValue;
  for (char c : std::string_view("<&]"))
    places[static_cast<unsigned char>(c)] &= static_cast<uint8_t>(~kInText);
  for (char c : std::string_view("<&\"'"))
    places[static_cast<unsigned char>(c)] &= static_cast<uint8_t>(~kInValue);
  allow("\t\n", kInText);
  allow(" \t\r\n", kBlank);
  allow("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_:", kNameStart | kInName);
  allow("0123456789-.", kInName);
  return places;
}

constexpr std::array<uint8_t, 256> kPlaces = makePlaces();

bool may(char character, Place place) {
  return (kPlaces[static_cast<unsigned char>(character)] & place) != 0;
}

bool isAllowed(char32_t c) {
  if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
  return c < 0xD800 || (c > 0xDFFF && c < 0xFFFE) || (c > 0xFFFF && c <= 0x10FFFF);
}

bool isUTF8(std::string_view encoding) {
  return encoding == "UTF-8" || encoding == "utf-8";
}

}  // namespace

/* The position is in a register meanwhile: the compiler must assume that characters overlap members. */
inline void PlainReader::skipAll(uint8_t place) {
  const char* next = next_;
  while (next != end_ && may(*next, static_cast<Place>(place))) ++next;
  next_ = next;
}

bool PlainReader::read(Arena& arena, std::string_view document) {
  arena_ = &arena;
  next_ = document.data();
  end_ = next_ + document.size();
  open_.clear();
  if (!skipDeclaration()) return false;
  skipBlanks();
  if (!skip('<') || !readStartTag()) return false;
  while (!open_.empty()) {
    if (!readText() || !readTag()) return false;
  }
  skipBlanks();
  return next_ == end_;
}

bool PlainReader::skipDeclaration() {
  if (!skip("<?xml")) return true;
  if (!readAttributes() || attributes_.empty() || attributes_.size() > 2) return false;
  if (attributes_[0].name != "version" || attributes_[0].value != "1.0") return false;
  bool namesUTF8 =
      attributes_.size() == 1 || (attributes_[1].name == "encoding" && isUTF8(attributes_[1].value));
  return namesUTF8 && skip("?>");
}

bool PlainReader::readTag() {
  return skip('<') && (skip('/') ? readEndTag() : readStartTag());
}

bool PlainReader::readStartTag() {
  std::string_view name = readName();
  if (name.empty() || !readAttributes()) return false;
  bool isEmpty = skip('/');
  if (!skip('>')) return false;
  const BQString* shared = names_.find(*arena_, name);
  const AttributeList* list = attributes_.empty() ? nullptr : lists_.find(*arena_, names_, attributes_);
  if (shared == nullptr || (list == nullptr && !attributes_.empty())) return false;
  if (!builder_.startElement(shared, list)) return false;
  if (isEmpty) {
    builder_.endElement();
  } else {
    open_.push_back(name);
  }
  return true;
}

bool PlainReader::readEndTag() {
  if (!skip(open_.back())) return false;
  skipBlanks();
  if (!skip('>')) return false;
  open_.pop_back();
  builder_.endElement();
  return true;
}

bool PlainReader::readAttributes() {
  attributes_.clear();
  while (skipBlanks() && may(peek(), kNameStart)) {
    if (!readAttribute()) return false;
  }
  return !may(peek(), kNameStart);
}

bool PlainReader::readAttribute() {
  std::string_view name = readName();
  skipBlanks();
  if (!skip('=')) return false;
  skipBlanks();
  std::string_view value = readQuoted();
  if (value.data() == nullptr || attributes_.size() == kMostAttributes) return false;
  auto isSame = [name](const Attribute& attribute) { return attribute.name == name; };
  if (std::any_of(attributes_.begin(), attributes_.end(), isSame)) return false;
  attributes_.push_back({name, value});
  return true;
}

/* Up to the next tag. */
bool PlainReader::readText() {
  const char* start = next_;
  skipBlanks();
  if (peek() == '<' && !builder_.keepsLeafText()) return true; /* such text makes no node */
  next_ = start;
  for (;;) {
    skipAll(kInText);
    switch (peek()) {
      case '<':
        appendFrom(start);
        return true;
      case '&':
        appendFrom(start);
        if (!readReference()) return false;
        start = next_;
        break;
      case '\r':
        appendFrom(start);
        readLineEnd();
        start = next_;
        break;
      case ']':
        if (rest().starts_with("]]>")) return false;
        ++next_;
        break;
      default:
        if (!skipCharacter()) return false;
    }
  }
}

bool PlainReader::readReference() {
  constexpr size_t kLongest = 12;
  size_t length = rest().substr(0, kLongest).find(';');
  if (length == std::string_view::npos) return false;
  std::string_view name = rest().substr(1, length - 1);
  next_ += length + 1;
  if (name.starts_with('#')) return readCharacterReference(name.substr(1));
  char character = predefinedEntity(name);
  if (character != '\0') builder_.appendText({&character, 1});
  return character != '\0';
}

bool PlainReader::readCharacterReference(std::string_view digits) {
  bool isHexadecimal = digits.starts_with('x');
  if (isHexadecimal) digits.remove_prefix(1);
  uint32_t character = 0;
  const char* end = digits.data() + digits.size();
  auto [stop, error] = std::from_chars(digits.data(), end, character, isHexadecimal ? 16 : 10);
  if (error != std::errc() || stop != end || !isAllowed(character)) return false;
  std::string text;
  appendUTF8Character(text, character);
  builder_.appendText(text);
  return true;
}

/* Lines of any kind end in a line feed. */
void PlainReader::readLineEnd() {
  skip('\r');
  skip('\n');
  builder_.appendText("\n");
}

bool PlainReader::skip(std::string_view expected) {
  if (!rest().starts_with(expected)) return false;
  next_ += expected.size();
  return true;
}

/* Returns true if there were any. */
bool PlainReader::skipBlanks() {
  const char* start = next_;
  skipAll(kBlank);
  return next_ != start;
}

/* One beyond ASCII. */
bool PlainReader::skipCharacter() {
  size_t size = next_ != end_ ? measureUTF8Character(next_, rest().size()) : 0;
  if (size < 2 || rest().starts_with("\xEF\xBF\xBE") || rest().starts_with("\xEF\xBF\xBF")) return false;
  next_ += size;
  return true;
}

/* Empty if there is none. */
std::string_view PlainReader::readName() {
  if (!may(peek(), kNameStart)) return {};
  const char* start = next_;
  skipAll(kInName);
  return {start, static_cast<size_t>(next_ - start)};
}

/* Without data if there is none. */
std::string_view PlainReader::readQuoted() {
  char quote = peek();
  if (quote != '"' && quote != '\'') return {};
  const char* start = ++next_;
  while (next_ != end_ && (may(*next_, kInValue) || (*next_ == '"' + '\'' - quote))) ++next_;
  if (peek() != quote) return {};
  return {start, static_cast<size_t>(next_++ - start)};
}

void PlainReader::appendFrom(const char* start) {
  if (next_ != start) builder_.appendLastingText({start, static_cast<size_t>(next_ - start)});
}

}  // namespace bq
