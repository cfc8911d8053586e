#include "xmlrpc/ValueWriter.h"

#include <charconv>
#include <string_view>
#include <vector>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>
#include <VX/VXTypes.h>

#include "xml/ISODate.h"
#include "xml/Kinds.h"
#include "xml/Text.h"

namespace vx {
namespace {

/* The level of the line that stands for a missing value, wherever it is. */
constexpr int kNilLevel = 3;

std::string_view textBetween(const char* start, const char* end) {
  return {start, static_cast<size_t>(end - start)};
}

/* A member's name as text: a key that is no string goes by its description. */
Owned<const BQString> copyName(BQTypeRef name) {
  return own(BQCopyDescription(name));
}

bool isString(BQTypeRef object) {
  return BQGetTypeID(object) == BQStringGetTypeID();
}

}  // namespace

void ValueWriter::write(int level, BQTypeRef value) {
  /* An override may take the value out of what holds it. */
  Owned<const void> kept = hasOverrides_ ? retain(value) : nullptr;
  buffer_.addLine(level, {"<value>"});
  if (!hasOverrides_ || !writeOverride(level, value)) {
    if (value == nullptr) {
      buffer_.addLine(kNilLevel, {"<i4>0</i4> <!-- parameter has no (nil) value -->"});
    } else {
      writeContent(level, value);
    }
  }
  buffer_.addLine(level, {"</value>"});
}

bool ValueWriter::writeOverride(int level, BQTypeRef value) {
  auto text = own(serializer_.seriailizeOverride(value));
  if (text == nullptr) return false;
  buffer_.addLine(level + 1, {textOf(text.get())});
  return true;
}

void ValueWriter::writeContent(int level, BQTypeRef value) {
  switch (VXGetVXTypeIDFromBQType(value)) {
    case kVXTypeBoolean:
      return buffer_.addLine(level + 1, {"<boolean>", value == kBQBooleanTrue ? "1" : "0", "</boolean>"});
    case kVXTypeInteger:
      return writeInteger(level, static_cast<const BQNumber*>(value));
    case kVXTypeDouble:
      return writeDouble(level, static_cast<const BQNumber*>(value));
    case kVXTypeString:
      return buffer_.addEncodedLine(level + 1, {"<string>"}, static_cast<const BQString*>(value),
                                    {"</string>"});
    case kVXTypeDate:
      return writeDate(level, static_cast<const BQDate*>(value));
    case kVXTypeData:
      return writeData(level, static_cast<const BQData*>(value));
    case kVXTypeArray:
      return writeArray(level, static_cast<const BQArray*>(value));
    case kVXTypeDictionary:
      return writeStruct(level, static_cast<const BQDictionary*>(value));
    case kVXTypeNull:
    case kVXTypeUnknown:
      return writeUnknown(level, value);
  }
}

void ValueWriter::writeInteger(int level, const BQNumber* number) {
  int32_t integer = 0;
  if (!BQNumberGetValue(number, kBQNumberSInt32Type, &integer)) integer = 0;
  char text[16];
  char* end = std::to_chars(text, text + sizeof text, integer).ptr;
  buffer_.addLine(level + 1, {"<i4>", textBetween(text, end), "</i4>"});
}

void ValueWriter::writeDouble(int level, const BQNumber* number) {
  double real = 0;
  if (!BQNumberGetValue(number, kBQNumberDoubleType, &real)) real = 0;
  char text[32];
  char* end = std::to_chars(text, text + sizeof text, real, std::chars_format::general, 6).ptr; /* "%g" */
  buffer_.addLine(level + 1, {"<double>", textBetween(text, end), "</double>"});
}

void ValueWriter::writeDate(int level, const BQDate* date) {
  char text[kISODateRoom];
  char* end = writeISODate(date, true, text);
  buffer_.addLine(level + 1, {"<dateTime.iso8601>", textBetween(text, end), "</dateTime.iso8601>"});
}

void ValueWriter::writeData(int level, const BQData* data) {
  buffer_.addLine(level + 1, {"<base64>"});
  buffer_.addBase64Line(0, {}, data, level + 3, {});
  buffer_.addLine(level + 1, {"</base64>"});
}

void ValueWriter::writeArray(int level, const BQArray* array) {
  buffer_.addLine(level + 1, {"<array>"});
  buffer_.addLine(level + 2, {"<data>"});
  if (buffer_.enterContainer()) {
    BQIndex count = BQArrayGetCount(array);
    for (BQIndex i = 0; i < count; ++i) write(level + 3, BQArrayGetValueAtIndex(array, i));
    buffer_.leaveContainer();
  }
  buffer_.addLine(level + 2, {"</data>"});
  buffer_.addLine(level + 1, {"</array>"});
}

void ValueWriter::writeStruct(int level, const BQDictionary* members) {
  Owned<const BQDictionary> copy = hasOverrides_ ? own(BQDictionaryCreateCopy(members)) : nullptr;
  const BQDictionary* dictionary = copy != nullptr ? copy.get() : members;
  buffer_.addLine(level + 1, {"<struct>"});
  if (buffer_.enterContainer()) {
    BQTypeRef order = BQDictionaryGetValue(dictionary, kVXRecordParameterOrder);
    if (BQGetTypeID(order) == BQArrayGetTypeID()) {
      auto* names = static_cast<const BQArray*>(order);
      for (BQIndex i = 0; i < BQArrayGetCount(names); ++i) {
        BQTypeRef name = BQArrayGetValueAtIndex(names, i);
        writeMember(level, name, BQDictionaryGetValue(dictionary, name));
      }
    } else {
      auto count = static_cast<size_t>(BQDictionaryGetCount(dictionary));
      std::vector<BQTypeRef> pairs(2 * count);
      BQDictionaryGetKeysAndValues(dictionary, pairs.data(), pairs.data() + count);
      for (size_t i = 0; i < count; ++i) writeMember(level, pairs[i], pairs[count + i]);
    }
    buffer_.leaveContainer();
  }
  buffer_.addLine(level + 1, {"</struct>"});
}

void ValueWriter::writeMember(int level, BQTypeRef name, BQTypeRef value) {
  if (name == nullptr) return;
  Owned<const BQString> made;
  if (!isString(name)) made = copyName(name);
  const BQString* text = made != nullptr ? made.get() : static_cast<const BQString*>(name);
  if (!isValidKey(text)) return;
  buffer_.addLine(level + 2, {"<member>"});
  buffer_.addLine(level + 3, {"<name>", textOf(text), "</name>"});
  write(level + 4, value);
  buffer_.addLine(level + 2, {"</member>"});
}

void ValueWriter::writeUnknown(int level, BQTypeRef value) {
  buffer_.addTo(level + 1, "<!-- Unknown BQType (%d) for parameter - trying string coercion -->",
                static_cast<int>(BQGetTypeID(value)));
  buffer_.addTo(level + 1, "<string>%@</string>", value);
}

}  // namespace vx
