#include "platform/plist/PropertyListWriter.h"

#include <charconv>
#include <cmath>
#include <vector>

#include <BQ/BQArray.h>
#include <BQ/BQBoolean.h>
#include <BQ/BQData.h>
#include <BQ/BQDate.h>
#include <BQ/BQDictionary.h>
#include <BQ/BQNumber.h>
#include <BQ/BQPropertyList.h>
#include <BQ/BQString.h>

#include "platform/object/Object.h"
#include "platform/plist/Base64.h"
#include "platform/plist/DateText.h"

namespace bq {
namespace {

/* What XML 1.0 cannot hold, written by number or not: control characters, U+FFFE and U+FFFF. */
bool isForbidden(std::string_view text, size_t position) {
  auto byte = static_cast<unsigned char>(text[position]);
  if (byte < 0x20) return byte != '\t' && byte != '\n' && byte != '\r';
  std::string_view character = text.substr(position, 3);
  return byte == 0xEF && (character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF");
}

/* The reference for a character that cannot stand for itself. The parser reads a plain CR as LF. */
std::string_view referenceFor(char character) {
  switch (character) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '\r':
      return "&#13;";
    default:
      return {};
  }
}

std::string_view realText(double value, char (&buffer)[32]) {
  if (std::isnan(value)) return "nan";
  auto end = std::to_chars(buffer, buffer + sizeof buffer, value);
  return {buffer, static_cast<size_t>(end.ptr - buffer)};
}

}  // namespace

bool PropertyListWriter::writeDocument(BQTypeRef value) {
  text_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
  if (!writeValue(value, 1)) return false;
  text_ += "</plist>\n";
  return true;
}

bool PropertyListWriter::writeValue(BQTypeRef value, size_t depth) {
  if (value == nullptr || depth >= kMaximumDepth) return false;
  indent(depth - 1);
  bool written = false;
  switch (BQGetTypeID(value)) {
    case kStringTypeID:
      written = writeString("string", value);
      break;
    case kNumberTypeID:
      written = writeNumber(static_cast<const BQNumber*>(value));
      break;
    case kDateTypeID:
      written = writeDate(static_cast<const BQDate*>(value));
      break;
    case kDataTypeID:
      written = writeData(static_cast<const BQData*>(value));
      break;
    case kArrayTypeID:
      written = writeArray(static_cast<const BQArray*>(value), depth);
      break;
    case kDictionaryTypeID:
      written = writeDictionary(static_cast<const BQDictionary*>(value), depth);
      break;
    case kBooleanTypeID:
      text_ += value == kBQBooleanTrue ? "<true/>" : "<false/>";
      written = true;
      break;
    default:
      return false;
  }
  text_ += '\n';
  return written;
}

bool PropertyListWriter::writeArray(const BQArray* array, size_t depth) {
  BQIndex count = BQArrayGetCount(array);
  if (count == 0) {
    text_ += "<array/>";
    return true;
  }
  text_ += "<array>\n";
  for (BQIndex i = 0; i < count; ++i) {
    if (!writeValue(BQArrayGetValueAtIndex(array, i), depth + 1)) return false;
  }
  indent(depth - 1);
  text_ += "</array>";
  return true;
}

bool PropertyListWriter::writeDictionary(const BQDictionary* dictionary, size_t depth) {
  auto count = static_cast<size_t>(BQDictionaryGetCount(dictionary));
  if (count == 0) {
    text_ += "<dict/>";
    return true;
  }
  std::vector<BQTypeRef> keys(count), values(count);
  BQDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
  text_ += "<dict>\n";
  for (size_t i = 0; i < count; ++i) {
    indent(depth);
    if (!isInstance(keys[i], kStringTypeID) || !writeString("key", keys[i])) return false;
    text_ += '\n';
    if (!writeValue(values[i], depth + 1)) return false;
  }
  indent(depth - 1);
  text_ += "</dict>";
  return true;
}

bool PropertyListWriter::writeString(std::string_view element, BQTypeRef object) {
  auto* string = static_cast<const BQString*>(object);
  std::string_view text(BQStringGetUTF8Ptr(string), static_cast<size_t>(BQStringGetLength(string)));
  open(element);
  if (!appendEscaped(text)) return false;
  close(element);
  return true;
}

bool PropertyListWriter::writeNumber(const BQNumber* number) {
  char buffer[32];
  if (BQNumberIsFloatType(number)) {
    double value = 0;
    BQNumberGetValue(number, kBQNumberFloat64Type, &value);
    element("real", realText(value, buffer));
  } else {
    int64_t value = 0;
    BQNumberGetValue(number, kBQNumberSInt64Type, &value);
    auto end = std::to_chars(buffer, buffer + sizeof buffer, value);
    element("integer", {buffer, static_cast<size_t>(end.ptr - buffer)});
  }
  return true;
}

bool PropertyListWriter::writeDate(const BQDate* date) {
  open("date");
  if (!appendDate(text_, BQDateGetAbsoluteTime(date))) return false;
  close("date");
  return true;
}

bool PropertyListWriter::writeData(const BQData* data) {
  open("data");
  appendBase64(text_, BQDataGetBytePtr(data), static_cast<size_t>(BQDataGetLength(data)));
  close("data");
  return true;
}

bool PropertyListWriter::appendEscaped(std::string_view text) {
  size_t start = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (isForbidden(text, i)) return false;
    std::string_view reference = referenceFor(text[i]);
    if (reference.empty()) continue;
    text_.append(text, start, i - start).append(reference);
    start = i + 1;
  }
  text_.append(text, start);
  return true;
}

void PropertyListWriter::element(std::string_view name, std::string_view content) {
  open(name);
  text_ += content;
  close(name);
}

void PropertyListWriter::open(std::string_view name) {
  text_.append(1, '<').append(name).append(1, '>');
}

void PropertyListWriter::close(std::string_view name) {
  text_.append("</").append(name).append(1, '>');
}

void PropertyListWriter::indent(size_t depth) {
  text_.append(depth * 2, ' ');
}

}  // namespace bq

const BQData* BQPropertyListCreateXMLData(BQTypeRef value) {
  bq::PropertyListWriter writer;
  if (!writer.writeDocument(value)) return nullptr;
  return BQDataCreate(writer.text().data(), static_cast<BQIndex>(writer.text().size()));
}
