#include "soap/SOAPValueWriter.h"

#include <charconv>
#include <vector>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>
#include <VX/VXTypes.h>

#include "xml/Entities.h"
#include "xml/ISODate.h"
#include "xml/Kinds.h"
#include "xml/Text.h"

namespace vx {
namespace {

std::string_view textBetween(const char* start, const char* end) {
  return {start, static_cast<size_t>(end - start)};
}

}  // namespace

void SOAPValueWriter::write(int level, std::string_view name, BQTypeRef value) {
  if (value == nullptr) return buffer_.addLine(level, {"<", name, " xsi:type=\"nil\"/>"});
  /* An override may take the value out of what holds it. */
  Owned<const void> kept = hasOverrides_ ? retain(value) : nullptr;
  if (!hasOverrides_ || !writeOverride(level, name, value)) writeContent(level, name, value);
}

void SOAPValueWriter::writeNamed(int level, BQTypeRef name, BQTypeRef value) {
  auto text = own(BQCopyDescription(name));
  write(level, textOf(text.get()), value);
}

bool SOAPValueWriter::writeOverride(int level, std::string_view name, BQTypeRef value) {
  auto text = own(serializer_.seriailizeOverride(value));
  if (text == nullptr) return false;
  auto line = own(BQStringCreateMutableCopy(text.get()));
  auto nameString = own(BQStringCreateWithUTF8(name.data(), static_cast<BQIndex>(name.size())));
  findReplaceAll(line.get(), BQSTR("%@"), nameString.get());
  buffer_.addLine(level, {textOf(line.get())});
  return true;
}

void SOAPValueWriter::writeContent(int level, std::string_view name, BQTypeRef value) {
  switch (VXGetVXTypeIDFromBQType(value)) {
    case kVXTypeNull:
      return buffer_.addLine(level, {"<", name, " xsi:type=\"nil\"/>"});
    case kVXTypeBoolean:
      return writeTyped(level, name, "boolean", value == kBQBooleanTrue ? "true" : "false");
    case kVXTypeInteger:
      return writeInteger(level, name, static_cast<const BQNumber*>(value));
    case kVXTypeDouble:
      return writeDouble(level, name, static_cast<const BQNumber*>(value));
    case kVXTypeString:
      return buffer_.addEncodedLine(level, {"<", name, " xsi:type=\"xsd:string\">"},
                                    static_cast<const BQString*>(value), {"</", name, ">"});
    case kVXTypeDate:
      return writeDate(level, name, static_cast<const BQDate*>(value));
    case kVXTypeData:
      return writeData(level, name, static_cast<const BQData*>(value));
    case kVXTypeArray:
      return writeArray(level, name, static_cast<const BQArray*>(value));
    case kVXTypeDictionary:
      return writeDictionary(level, name, static_cast<const BQDictionary*>(value));
    case kVXTypeUnknown:
      return writeUnknown(level, name, value);
  }
}

void SOAPValueWriter::writeTyped(int level, std::string_view name, std::string_view type,
                                 std::string_view text) {
  buffer_.addLine(level, {"<", name, " xsi:type=\"xsd:", type, "\">", text, "</", name, ">"});
}

void SOAPValueWriter::writeInteger(int level, std::string_view name, const BQNumber* number) {
  int32_t integer = 0;
  if (!BQNumberGetValue(number, kBQNumberSInt32Type, &integer)) integer = 0;
  char text[16];
  writeTyped(level, name, "int", textBetween(text, std::to_chars(text, text + sizeof text, integer).ptr));
}

void SOAPValueWriter::writeDouble(int level, std::string_view name, const BQNumber* number) {
  double real = 0;
  if (!BQNumberGetValue(number, kBQNumberDoubleType, &real)) real = 0;
  char text[32];
  char* end = std::to_chars(text, text + sizeof text, real, std::chars_format::general, 8).ptr; /* "%.8g" */
  writeTyped(level, name, "double", textBetween(text, end));
}

void SOAPValueWriter::writeDate(int level, std::string_view name, const BQDate* date) {
  char text[kISODateRoom];
  writeTyped(level, name, textOf(generation_.dateType), textBetween(text, writeISODate(date, false, text)));
}

void SOAPValueWriter::writeData(int level, std::string_view name, const BQData* data) {
  buffer_.addBase64Line(level, {"<", name, " xsi:type=\"xsd:", textOf(generation_.dataType), "\">"}, data,
                        level, {"</", name, ">"});
}

void SOAPValueWriter::writeArray(int level, std::string_view name, const BQArray* array) {
  BQIndex count = BQArrayGetCount(array);
  char countText[32];
  char* countEnd = std::to_chars(countText, countText + sizeof countText, count).ptr;
  buffer_.addLine(level, {"<", name, " SOAP-ENC:arrayType=\"xsd:", textOf(generation_.arrayItemType), "[",
                          textBetween(countText, countEnd), "]\" xsi:type=\"SOAP-ENC:Array\">"});
  if (buffer_.enterContainer()) {
    char itemName[40] = "item_";
    for (BQIndex i = 0; i < count; ++i) {
      char* end = std::to_chars(itemName + 5, itemName + sizeof itemName, i).ptr;
      if (BQTypeRef item = BQArrayGetValueAtIndex(array, i)) {
        write(level + 1, textBetween(itemName, end), item);
      } else {
        buffer_.addTo(level + 1, "<!-- Missing value at index %d -->\n", static_cast<int>(i));
      }
    }
    buffer_.leaveContainer();
  }
  buffer_.addLine(level, {"</", name, ">"});
}

void SOAPValueWriter::writeDictionary(int level, std::string_view name, const BQDictionary* members) {
  Owned<const BQDictionary> copy = hasOverrides_ ? own(BQDictionaryCreateCopy(members)) : nullptr;
  const BQDictionary* dictionary = copy != nullptr ? copy.get() : members;
  BQTypeRef typeEntry = BQDictionaryGetValue(dictionary, kVXRecordType);
  BQTypeRef namespaceEntry = BQDictionaryGetValue(dictionary, kVXRecordNamespaceURI);
  auto type = own(BQCopyDescription(typeEntry != nullptr ? typeEntry : BQSTR("SOAP-ENC:Dictionary")));
  if (namespaceEntry == nullptr) {
    buffer_.addLine(level, {"<", name, " xsi:type=\"", textOf(type.get()), "\">"});
  } else {
    auto uri = own(BQCopyDescription(namespaceEntry));
    buffer_.addLine(level,
                    {"<", name, " xsi:type=\"", textOf(type.get()), "\" xmlns=\"", textOf(uri.get()), "\">"});
  }
  if (buffer_.enterContainer()) {
    writeMembers(level + 1, dictionary);
    buffer_.leaveContainer();
  }
  buffer_.addLine(level, {"</", name, ">"});
}

void SOAPValueWriter::writeMembers(int level, const BQDictionary* dictionary) {
  BQTypeRef order = BQDictionaryGetValue(dictionary, kVXRecordParameterOrder);
  if (BQGetTypeID(order) == BQArrayGetTypeID()) {
    auto* keys = static_cast<const BQArray*>(order);
    for (BQIndex i = 0; i < BQArrayGetCount(keys); ++i) {
      BQTypeRef key = BQArrayGetValueAtIndex(keys, i);
      writeMember(level, key, BQDictionaryGetValue(dictionary, key));
    }
    return;
  }
  auto count = static_cast<size_t>(BQDictionaryGetCount(dictionary));
  std::vector<BQTypeRef> pairs(2 * count);
  BQDictionaryGetKeysAndValues(dictionary, pairs.data(), pairs.data() + count);
  for (size_t i = 0; i < count; ++i) writeMember(level, pairs[i], pairs[count + i]);
}

void SOAPValueWriter::writeMember(int level, BQTypeRef key, BQTypeRef value) {
  if (key == nullptr) return;
  auto name = own(BQCopyDescription(key));
  if (isValidKey(name.get())) write(level, textOf(name.get()), value);
}

void SOAPValueWriter::writeUnknown(int level, std::string_view name, BQTypeRef value) {
  auto text = own(BQCopyDescription(value));
  auto comment = own(BQStringCreateWithFormat(BQSTR(" <!-- UNKNOWN PARAMETER TYPE %d -->"),
                                              static_cast<int>(BQGetTypeID(value))));
  buffer_.addLine(level, {"<", name, ">", textOf(text.get()), "</", name, ">", textOf(comment.get())});
}

}  // namespace vx
