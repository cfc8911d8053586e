#include "xml/XMLBuffer.h"

#include <cstdarg>
#include <cstring>

#include <array>

#include <BQ/BQString.h>

#include "xml/Base64.h"
#include "xml/Entities.h"
#include "xml/Text.h"

namespace vx {
namespace {

constexpr int kMaximumDepth = 512;
/* Enough for a small call, and small enough for the allocator's quick lists. */
constexpr size_t kFirstCapacity = 960;
constexpr size_t kDeepestIndent = 30;
constexpr char kBlanks[] = "                              ";
static_assert(sizeof kBlanks == kDeepestIndent + 1);

/* The number of blanks of a level. */
size_t indentOf(int level) {
  return level >= 0 && level < 15 ? 2 * static_cast<size_t>(level) : kDeepestIndent;
}

char* put(char* out, std::string_view piece) {
  if (!piece.empty()) std::memcpy(out, piece.data(), piece.size());
  return out + piece.size();
}

char* put(char* out, XMLBuffer::Pieces pieces) {
  for (std::string_view piece : pieces) out = put(out, piece);
  return out;
}

size_t sizeOf(XMLBuffer::Pieces pieces) {
  size_t size = 0;
  for (std::string_view piece : pieces) size += piece.size();
  return size;
}

char* putIndent(char* out, int level) {
  std::memcpy(out, kBlanks, kDeepestIndent); /* a fixed size is quicker; there is room */
  return out + indentOf(level);
}

char* putLineEnd(char* out) {
  return put(out, std::string_view("\r\n"));
}

/* What a line needs besides its pieces. */
constexpr size_t kLineRoom = kDeepestIndent + 2;

}  // namespace

XMLBuffer::XMLBuffer(unsigned long wanted)
    : text(own(BQStringCreateMutable(kFirstCapacity))), encoding(wanted) {
  const BQString* name = BQStringConvertEncodingToIANACharSetName(static_cast<BQStringEncoding>(wanted));
  if (name == nullptr || wanted > UINT32_MAX) {
    name = BQSTR("UTF-8");
    encoding = kBQStringEncodingUTF8;
  }
  addLine(0, {"<?xml version=\"1.0\" encoding=\"", textOf(name), "\"?>"});
}

char* XMLBuffer::reserve(size_t size) {
  return BQStringReserveUTF8(text.get(), static_cast<BQIndex>(size));
}

void XMLBuffer::commit(const char* start, const char* end) {
  BQStringCommitUTF8(text.get(), end - start);
}

void XMLBuffer::addTo(int level, const char* format, ...) {
  auto length = static_cast<BQIndex>(std::strlen(format));
  auto wrapped = own(BQStringCreateWithBytesNoCopy(format, length, kBQStringEncodingASCII));
  va_list arguments;
  va_start(arguments, format);
  addTo(level, wrapped.get(), arguments);
  va_end(arguments);
}

void XMLBuffer::addTo(int level, const BQString* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  addTo(level, format, arguments);
  va_end(arguments);
}

void XMLBuffer::addTo(int level, const BQString* format, va_list arguments) {
  BQStringAppend(text.get(), getIndentString(level));
  BQStringAppendFormatAndArguments(text.get(), format, arguments);
  BQStringAppend(text.get(), BQSTR("\r\n"));
}

void XMLBuffer::addLine(int level, Pieces pieces) {
  char* start = reserve(kLineRoom + sizeOf(pieces));
  commit(start, putLineEnd(put(putIndent(start, level), pieces)));
}

void XMLBuffer::addEncodedLine(int level, Pieces before, const BQString* encoded, Pieces after) {
  std::string_view content = textOf(encoded);
  char* start = reserve(kLineRoom + sizeOf(before) + entityEncodedRoom(content) + sizeOf(after));
  char* end = put(putIndent(start, level), before);
  commit(start, putLineEnd(put(entityEncode(content, end), after)));
}

void XMLBuffer::addBase64Line(int level, Pieces before, const BQData* data, int indent, Pieces after) {
  char* start = reserve(kLineRoom + sizeOf(before) + base64Length(data, indent) + sizeOf(after));
  char* end = put(putIndent(start, level), before);
  commit(start, putLineEnd(put(writeBase64(data, indent, end), after)));
}

bool XMLBuffer::enterContainer() {
  /* Once void, nothing more is written: a container that holds itself twice would take forever. */
  if (depth_ == kMaximumDepth) tooDeep_ = true;
  if (tooDeep_) return false;
  ++depth_;
  return true;
}

const BQData* XMLBuffer::copyData() const {
  if (tooDeep_) return nullptr;
  return BQStringCreateExternalRepresentation(text.get(), static_cast<BQStringEncoding>(encoding), 0);
}

const BQString* XMLBuffer::getIndentString(int level) {
  static const std::array<const BQString*, 16> strings = [] {
    std::array<const BQString*, 16> made{};
    for (size_t i = 0; i < made.size(); ++i)
      made[i] = BQStringCreateWithUTF8(kBlanks, static_cast<BQIndex>(2 * i));
    return made;
  }();
  return strings[indentOf(level) / 2];
}

}  // namespace vx
