#include "xml/Kinds.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <array>
#include <string_view>

#include <BQ/BQ.h>

#include "values/Construction.h"
#include "values/Owned.h"
#include "xml/SOAPNamespaces.h"
#include "xml/Text.h"

namespace vx {
namespace {

using TypeTable = std::array<TypeRow, kTypeRowCount>;

TypeTable filledTypeTable() {
  TypeTable table = {{
      {0, BQNumberGetTypeID, kVXTypeUnknown},
      {0, BQNullGetTypeID, kVXTypeNull},
      {0, BQBooleanGetTypeID, kVXTypeBoolean},
      {0, BQStringGetTypeID, kVXTypeString},
      {0, BQDateGetTypeID, kVXTypeDate},
      {0, BQDataGetTypeID, kVXTypeData},
      {0, BQArrayGetTypeID, kVXTypeArray},
      {0, BQDictionaryGetTypeID, kVXTypeDictionary},
  }};
  for (TypeRow& row : table) row.typeID = row.getTypeID();
  return table;
}

const BQDictionary* makeSchemaNames() {
  return bqTypeCreateDictionary(
      nullptr, BQSTR("nil"), internedInt(kVXTypeNull), BQSTR("null"), internedInt(kVXTypeNull), BQSTR("NULL"),
      internedInt(kVXTypeNull), BQSTR("boolean"), internedInt(kVXTypeBoolean), BQSTR("bool"),
      internedInt(kVXTypeBoolean), BQSTR("i4"), internedInt(kVXTypeInteger), BQSTR("int"),
      internedInt(kVXTypeInteger), BQSTR("long"), internedInt(kVXTypeInteger), BQSTR("short"),
      internedInt(kVXTypeInteger), BQSTR("string"), internedInt(kVXTypeString), BQSTR("double"),
      internedInt(kVXTypeDouble), BQSTR("decimal"), internedInt(kVXTypeDouble), BQSTR("float"),
      internedInt(kVXTypeDouble), BQSTR("timeInstant"), internedInt(kVXTypeDate), BQSTR("dateTime"),
      internedInt(kVXTypeDate), BQSTR("base64"), internedInt(kVXTypeData), BQSTR("base64Binary"),
      internedInt(kVXTypeData), BQSTR("Array"), internedInt(kVXTypeArray), BQSTR("Dictionary"),
      internedInt(kVXTypeDictionary), nullptr);
}

VXTypeID kindOfSchemaName(const BQString* name) {
  static const BQDictionary* const sQDict = makeSchemaNames();
  int kind = 0;
  BQNumberGetValue(static_cast<const BQNumber*>(BQDictionaryGetValue(sQDict, name)), kBQNumberIntType, &kind);
  return static_cast<VXTypeID>(kind);
}

bool isKnownNamespace(const BQString* uri) {
  return BQStringEqualsIgnoringCase(uri, VX_SOAP_1999_SCHEMA_NAMESPACE) ||
         BQStringEqualsIgnoringCase(uri, VX_SOAP_2001_SCHEMA_NAMESPACE) ||
         BQStringEqualsIgnoringCase(uri, VX_SOAP_1999_ENCODING_NAMESPACE);
}

constexpr size_t kLongestIntegerText = 128;

/*
 * The start of a text as ASCII with a NUL: a character beyond ASCII becomes one blank. `out` has
 * room for kLongestIntegerText + 1 bytes.
 */
void copyASCII(std::string_view text, char* out) {
  char* end = out + kLongestIntegerText;
  for (char character : text) {
    auto byte = static_cast<unsigned char>(character);
    if (byte >= 0x80 && byte < 0xC0) continue; /* inside a character */
    if (out == end) break;
    *out++ = byte < 0x80 ? character : ' ';
  }
  *out = '\0';
}

/* A short decimal number without sign or leading zero, which most are; -1 for any other text. */
int64_t readPlainDecimal(std::string_view text) {
  if (text.empty() || text.size() > 18 || text[0] == '0') return -1;
  int64_t value = 0;
  for (char character : text) {
    if (character < '0' || character > '9') return -1;
    value = 10 * value + (character - '0');
  }
  return value;
}

/* Newer C libraries read "0b101" as five; it is a zero with something behind it. */
bool isBinary(const char* text) {
  text += std::strspn(text, " \t\n\v\f\r");
  text += *text == '-' || *text == '+';
  return text[0] == '0' && (text[1] == 'b' || text[1] == 'B');
}

int64_t readInteger(std::string_view text) {
  int64_t value = readPlainDecimal(text);
  if (value >= 0) return value;
  char buffer[kLongestIntegerText + 1];
  copyASCII(text, buffer);
  return isBinary(buffer) ? 0 : std::strtoll(buffer, nullptr, 0);
}

}  // namespace

const TypeRow* getTypeTable() {
  static const TypeTable _gTypeTable = filledTypeTable();
  return _gTypeTable.data();
}

VXTypeID VXQualifiedtoVXType(const BQString* namespaceURI, const BQString* typeName) {
  if (isKnownNamespace(namespaceURI)) return kindOfSchemaName(typeName);
  std::string_view name = textOf(typeName);
  size_t colon = name.rfind(':');
  if (colon == std::string_view::npos || colon == 0) return kVXTypeUnknown;
  auto start = static_cast<BQIndex>(colon + 1);
  auto local =
      own(BQStringCreateSubstring(typeName, BQRangeMake(start, BQStringGetLength(typeName) - start)));
  return kindOfSchemaName(local.get());
}

const BQNumber* makeIntValueFromString(std::string_view text) {
  int64_t value = readInteger(text);
  if (value < INT32_MIN || value > INT32_MAX) return BQNumberCreate(kBQNumberSInt64Type, &value);
  auto narrow = static_cast<int32_t>(value);
  return BQNumberCreate(kBQNumberSInt32Type, &narrow);
}

int getDictNumber(const BQDictionary* dictionary, const BQString* key, int fallback) {
  int value = 0;
  auto* number = static_cast<const BQNumber*>(BQDictionaryGetValue(dictionary, key));
  return BQNumberGetValue(number, kBQNumberIntType, &value) ? value : fallback;
}

bool isValidKey(const BQString* key) {
  std::string_view text = textOf(key);
  return !text.empty() && text[0] != '/';
}

}  // namespace vx

VXTypeID VXGetVXTypeIDFromBQType(BQTypeRef value) {
  const vx::TypeRow* table = vx::getTypeTable();
  BQTypeID typeID = BQGetTypeID(value);
  if (typeID == table[0].typeID) {
    return BQNumberIsFloatType(static_cast<const BQNumber*>(value)) ? kVXTypeDouble : kVXTypeInteger;
  }
  for (int i = 1; i < vx::kTypeRowCount; ++i) {
    if (table[i].typeID == typeID) return table[i].kind;
  }
  return kVXTypeUnknown;
}

BQTypeID VXGetBQTypeIDFromVXTypeID(VXTypeID kind) {
  const vx::TypeRow* table = vx::getTypeTable();
  if (kind == kVXTypeInteger || kind == kVXTypeDouble) return table[0].typeID;
  for (int i = 1; i < vx::kTypeRowCount; ++i) {
    if (table[i].kind == kind) return table[i].typeID;
  }
  return 0;
}
