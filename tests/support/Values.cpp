#include "support/Values.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cstdio>
#include <vector>

namespace support {
namespace {

std::string numberNotation(const BQNumber* number) {
  char out[64];
  if (BQNumberIsFloatType(number)) {
    double value = 0;
    BQNumberGetValue(number, kBQNumberFloat64Type, &value);
    return std::string(out, std::to_chars(out, out + sizeof out, value).ptr) + "d";
  }
  int64_t value = 0;
  BQNumberGetValue(number, kBQNumberSInt64Type, &value);
  return std::to_string(value) + (BQNumberGetType(number) == kBQNumberSInt64Type ? "L" : "");
}

std::string dateNotation(const BQDate* date) {
  BQGregorianDate fields = BQAbsoluteTimeGetGregorianDate(BQDateGetAbsoluteTime(date));
  auto second = static_cast<int>(fields.second);
  char out[64], fraction[32];
  std::snprintf(out, sizeof out, "@%04d-%02d-%02dT%02d:%02d:%02d", fields.year, fields.month, fields.day,
                fields.hour, fields.minute, second);
  std::snprintf(fraction, sizeof fraction, "%g", fields.second - second);
  return out + std::string(fraction).substr(1);
}

std::string dataNotation(const BQData* data) {
  std::string result = "<";
  for (unsigned char byte : bytes(data)) {
    char out[3];
    std::snprintf(out, sizeof out, "%02x", byte);
    result += out;
  }
  return result + ">";
}

std::string arrayNotation(const BQArray* array) {
  std::string result;
  for (BQIndex i = 0; i < BQArrayGetCount(array); ++i) {
    result += (i > 0 ? ", " : "") + notation(BQArrayGetValueAtIndex(array, i));
  }
  return "[" + result + "]";
}

std::string dictionaryNotation(const BQDictionary* dictionary) {
  std::vector<BQTypeRef> keys(static_cast<size_t>(BQDictionaryGetCount(dictionary)));
  BQDictionaryGetKeysAndValues(dictionary, keys.data(), nullptr);
  std::string result;
  for (BQTypeRef key : keys) {
    result += result.empty() ? "" : ", ";
    result += text(key) + ": " + notation(BQDictionaryGetValue(dictionary, key));
  }
  return "{" + result + "}";
}

template <class T>
const T* cast(BQTypeRef object) {
  return static_cast<const T*>(object);
}

}  // namespace

Value string(std::string_view utf8) {
  return Value::adopt(BQStringCreateWithUTF8(utf8.data(), static_cast<BQIndex>(utf8.size())));
}

Value integer(int64_t number, BQNumberType type) {
  auto wide = Value::adopt(BQNumberCreate(kBQNumberSInt64Type, &number));
  unsigned char room[sizeof(int64_t)];
  BQNumberGetValue(wide, type, room);
  return Value::adopt(BQNumberCreate(type, room));
}

Value real(double number) {
  return Value::adopt(BQNumberCreate(kBQNumberDoubleType, &number));
}

Value date(BQAbsoluteTime time) {
  return Value::adopt(BQDateCreate(time));
}

Value blob(std::string_view bytes) {
  return Value::adopt(BQDataCreate(bytes.data(), static_cast<BQIndex>(bytes.size())));
}

Value array(std::initializer_list<Value> values) {
  BQArray* result = BQArrayCreateMutable(0);
  for (const Value& value : values) BQArrayAppendValue(result, value.get());
  return Value::adopt(result);
}

Value dictionary(std::initializer_list<std::pair<std::string_view, Value>> pairs) {
  BQDictionary* result = BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys);
  for (const auto& [key, value] : pairs) BQDictionarySetValue(result, string(key).get(), value.get());
  return Value::adopt(result);
}

Value url(std::string_view text) {
  return Value::adopt(BQURLCreateWithString(string(text), nullptr));
}

Value tree(std::string_view document) {
  const BQDictionary* error = nullptr;
  auto result = Value::adopt(BQXMLTreeCreateFromDataWithError(blob(document), &error));
  EXPECT_EQ(error, nullptr) << text(Value::adopt(error).get());
  return result;
}

std::string text(BQTypeRef object) {
  auto description = Value::adopt(BQCopyDescription(object));
  return {BQStringGetUTF8Ptr(description), static_cast<size_t>(BQStringGetLength(description))};
}

std::string bytes(const BQData* data) {
  if (data == nullptr) return "(null)";
  return {reinterpret_cast<const char*>(BQDataGetBytePtr(data)), static_cast<size_t>(BQDataGetLength(data))};
}

std::string notation(BQTypeRef value) {
  BQTypeID typeID = BQGetTypeID(value);
  if (value == nullptr) return "-";
  if (value == kBQNull) return "null";
  if (typeID == BQStringGetTypeID()) return "'" + text(value) + "'";
  if (typeID == BQBooleanGetTypeID()) return value == kBQBooleanTrue ? "true" : "false";
  if (typeID == BQNumberGetTypeID()) return numberNotation(cast<BQNumber>(value));
  if (typeID == BQDateGetTypeID()) return dateNotation(cast<BQDate>(value));
  if (typeID == BQDataGetTypeID()) return dataNotation(cast<BQData>(value));
  if (typeID == BQArrayGetTypeID()) return arrayNotation(cast<BQArray>(value));
  if (typeID == BQDictionaryGetTypeID()) return dictionaryNotation(cast<BQDictionary>(value));
  return text(Value::adopt(BQCopyTypeIDDescription(typeID)).get());
}

std::string withCRLF(std::string_view document) {
  std::string result;
  for (char character : document) {
    if (character == '\n') result += '\r';
    result += character;
  }
  return result;
}

}  // namespace support
