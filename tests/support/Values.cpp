#include "support/Values.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <iomanip>
#include <sstream>

#include <VX/VXDate.h>

#include "support/Constants.h"

namespace support {
namespace {

std::string stringNotation(BQTypeRef string) {
  std::ostringstream out;
  out << std::quoted(text(string), '\'');
  return out.str();
}

std::string numberNotation(const BQNumber* number) {
  char out[64];
  double real = 0;
  int64_t integer = 0;
  BQNumberGetValue(number, kBQNumberFloat64Type, &real);
  BQNumberGetValue(number, kBQNumberSInt64Type, &integer);
  if (BQNumberIsFloatType(number))
    return std::string(out, std::to_chars(out, out + sizeof out, real).ptr) + "d";
  return std::to_string(integer) + (BQNumberGetType(number) == kBQNumberSInt64Type ? "L" : "");
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
  std::ostringstream out;
  for (unsigned char byte : bytes(data)) out << std::hex << std::setw(2) << std::setfill('0') << int{byte};
  return "<" + out.str() + ">";
}

std::string arrayNotation(const BQArray* array) {
  std::string result;
  for (BQIndex i = 0; i < BQArrayGetCount(array); ++i)
    result += (i > 0 ? ", " : "") + notation(BQArrayGetValueAtIndex(array, i));
  return "[" + result + "]";
}

std::string dictionaryNotation(const BQDictionary* dictionary) {
  std::vector<BQTypeRef> keys(static_cast<size_t>(BQDictionaryGetCount(dictionary)));
  BQDictionaryGetKeysAndValues(dictionary, keys.data(), nullptr);
  std::string result;
  for (BQTypeRef key : keys)
    result +=
        (result.empty() ? "" : ", ") + text(key) + ": " + notation(BQDictionaryGetValue(dictionary, key));
  return "{" + result + "}";
}

/* Null, a boolean, a number, a date, or the very object of a public constant. */
Value readWord(std::istream& in) {
  std::string word;
  for (int next; (next = in.peek()) != EOF && std::strchr(",]} ", next) == nullptr;)
    word += static_cast<char>(in.get());
  if (word == "-") return Value();
  if (word.starts_with('@'))
    return Value::adopt(
        vxCreateDateFromISO8601(reinterpret_cast<const unsigned char*>(&word[1]), word.size() - 1));
  if (word == "null") return Value::retain(kBQNull);
  if (word == "true") return Value::retain(kBQBooleanTrue);
  if (word == "false") return Value::retain(kBQBooleanFalse);
  for (const auto& [object, characters] : kConstants) {
    if (word == characters) return Value::retain(object);
  }
  if (word.ends_with('d')) return real(std::stod(word));
  return integer(std::stoll(word), word.ends_with('L') ? kBQNumberSInt64Type : kBQNumberSInt32Type);
}

/* Bytes; <00x57> is one byte 57 times. */
Value readData(std::istream& in) {
  std::string digits, result;
  std::getline(in, digits, '>');
  for (size_t i = 0; i + 1 < digits.size() && digits[i] != 'x'; i += 2)
    result += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  if (digits.find('x') == 2) result.resize(std::stoul(digits.substr(3)), result.at(0));
  return blob(result);
}

Value readValue(std::istream& in) {
  auto ends = [&](char end) { return (in >> std::ws).peek() == end && in.get(); };
  std::string name;
  switch (char first = '\0'; in >> first, first) {
    case '\'':
      in.unget() >> std::quoted(name, '\'');
      return string(name);
    case '[':
      for (Value result = array({});; ends(',')) {
        if (ends(']')) return result;
        BQArrayAppendValue(result.as<BQArray>(), readValue(in).get());
      }
    case '{':
      for (Value result = dictionary({});; ends(',')) {
        if (ends('}')) return result;
        std::getline(in, name, ':');
        BQDictionarySetValue(result.as<BQDictionary>(), string(name).get(), readValue(in).get());
      }
    case '<':
      return readData(in);
    default:
      return readWord(in.unget());
  }
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

/* Is called on small stacks. */
std::string notation(BQTypeRef object) {
  const Value value = Value::retain(object);
  const BQTypeID typeID = BQGetTypeID(object);
  if (object == nullptr) return "-";
  if (object == kBQNull) return "null";
  if (typeID == BQBooleanGetTypeID()) return object == kBQBooleanTrue ? "true" : "false";
  if (typeID == BQNumberGetTypeID()) return numberNotation(value);
  if (typeID == BQDateGetTypeID()) return dateNotation(value);
  if (typeID == BQDataGetTypeID()) return dataNotation(value);
  if (typeID == BQArrayGetTypeID()) return arrayNotation(value);
  if (typeID == BQDictionaryGetTypeID()) return dictionaryNotation(value);
  if (typeID == BQStringGetTypeID()) return stringNotation(object);
  return text(Value::adopt(BQCopyTypeIDDescription(typeID)).get());
}

std::vector<Value> valuesOf(const std::string& notation) {
  std::vector<Value> values;
  for (std::istringstream in(notation); in >> std::ws, !in.eof();) values.push_back(readValue(in));
  return values;
}

}  // namespace support
