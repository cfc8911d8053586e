#include "TypedText.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <vector>

#include <BQ/BQ.h>
#include <VX/VXDate.h>

#include "Base64.h"
#include "DateText.h"
#include "InputFile.h"
#include "Json.h"
#include "Number.h"
#include "common/Text.h"
#include "common/UsageError.h"

namespace tools::vxcall {
namespace {

UsageError notA(std::string_view text, std::string_view kind) {
  return UsageError("'" + maskAnyURL(text) + "' is not " + std::string(kind));
}

/* The number readers of the standard library take no plus sign. */
std::string_view withoutPlus(std::string_view text) {
  return text.size() > 1 && text[0] == '+' && text[1] != '-' ? text.substr(1) : text;
}

/* Whether all of the text is digits behind an optional sign. */
bool looksLikeInt(std::string_view text) {
  if (!text.empty() && (text[0] == '+' || text[0] == '-')) text.remove_prefix(1);
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

Value readInt(std::string_view text) {
  if (!looksLikeInt(text)) throw notA(text, "an int");
  std::string_view digits = withoutPlus(text);
  int64_t value = 0;
  auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc()) throw integerTooLarge(std::string(text));
  return makeInteger(value);
}

/* Nothing if the text is no number; throws for one that a double cannot hold. */
std::optional<double> doubleFromText(std::string_view text) {
  std::string_view digits = withoutPlus(text);
  const char* last = digits.data() + digits.size();
  double value = 0;
  auto [end, error] = std::from_chars(digits.data(), last, value);
  if (end != last || error == std::errc::invalid_argument) return std::nullopt;
  if (error != std::errc()) throw UsageError("'" + std::string(text) + "' does not fit a double");
  return value;
}

Value readDouble(std::string_view text) {
  std::optional<double> value = doubleFromText(text);
  if (!value) throw notA(text, "a double");
  return makeDouble(*value);
}

Value readBool(std::string_view text) {
  if (text == "true" || text == "1") return Value::retain(kBQBooleanTrue);
  if (text == "false" || text == "0") return Value::retain(kBQBooleanFalse);
  throw notA(text, "a bool: true, false, 1 or 0");
}

Value readString(std::string_view text) {
  return Value::retain(makeString(text).get());
}

Value readDate(std::string_view text) {
  if (!isDateText(text)) throw notA(text, "a date such as 2005-02-28T13:45:09Z");
  return Value::adopt(
      vxCreateDateFromISO8601(reinterpret_cast<const unsigned char*>(text.data()), text.size()));
}

Value makeData(const void* bytes, size_t size) {
  return Value::adopt(BQDataCreate(bytes, static_cast<BQIndex>(size)));
}

Value readBase64(std::string_view text) {
  auto bytes = decodeBase64(text);
  if (!bytes) throw notA(text, "base64");
  return makeData(bytes->data(), bytes->size());
}

Value readFile(std::string_view path) {
  std::string bytes = readInput(std::string(path));
  return makeData(bytes.data(), bytes.size());
}

Value readNil(std::string_view text) {
  if (!text.empty()) throw UsageError("nothing may follow nil:");
  return {};
}

/* "line 2, column 7", or the column alone in a text of one line; from 1, and in characters. */
std::string placeOf(std::string_view text, size_t byte) {
  std::string_view before = text.substr(0, byte);
  size_t lineStart = before.find_last_of('\n') + 1;
  auto isStart = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
  std::string_view line = before.substr(lineStart);
  std::string place = "column " + std::to_string(1 + std::count_if(line.begin(), line.end(), isStart));
  if (text.find('\n') == std::string_view::npos) return place;
  return "line " + std::to_string(1 + std::count(before.begin(), before.end(), '\n')) + ", " + place;
}

/* What the parser says behind the place and the text that it has read, which it shows as it is. */
std::string reasonOf(std::string_view message) {
  size_t start = message.find(" - ");
  if (start == std::string_view::npos) return "syntax error";
  std::string reason(message.substr(start + 3));
  size_t shown = reason.find("; last read: '");
  if (shown == std::string::npos) return reason;
  size_t expected = reason.rfind("'; expected ");
  if (expected != std::string::npos && expected > shown) return reason.erase(shown, expected + 1 - shown);
  reason.erase(shown);
  return reason == "invalid literal" ? reason + "; expected a value" : reason;
}

UsageError notJson(const std::string& name, std::string_view text, const Json::parse_error& error) {
  size_t byte = std::min(error.byte == 0 ? 0 : error.byte - 1, text.size());
  return UsageError(name + " is not JSON at " + placeOf(text, byte) + ": " + reasonOf(error.what()));
}

Value readJson(std::string_view text) {
  const bool isFile = text.starts_with('@');
  const std::string path(isFile ? text.substr(1) : "");
  const std::string contents = isFile ? readInput(path) : std::string(text);
  try {
    Json json = Json::parse(contents);
    return json.is_null() ? Value() : valueFromJson(json);
  } catch (const Json::parse_error& error) {
    throw notJson(isFile ? nameOfInput(path) : "'" + shortened(text) + "'", contents, error);
  } catch (const Json::exception&) {
    throw UsageError("a number in the JSON value does not fit a double");
  }
}

Value readUntyped(std::string_view text) {
  if (looksLikeInt(text)) return readInt(text);
  /* "inf" and "nan" are words before they are numbers. */
  bool numeric = !text.empty() && text.find_first_not_of("0123456789+-.eE") == std::string_view::npos;
  if (numeric) {
    if (std::optional<double> value = doubleFromText(text)) return makeDouble(*value);
  }
  if (text == "true" || text == "false") return readBool(text);
  return readString(text);
}

struct Type {
  std::string_view name;
  Value (*read)(std::string_view text);
};

constexpr Type kTypes[] = {
    {"int", readInt},       {"double", readDouble}, {"bool", readBool},
    {"string", readString}, {"date", readDate},     {"base64", readBase64},
    {"file", readFile},     {"nil", readNil},       {"json", readJson},
};

/* Null if the text begins with none. */
const Type* typeOf(std::string_view text) {
  size_t colon = text.find(':');
  if (colon == std::string_view::npos) return nullptr;
  const Type* type = std::find_if(std::begin(kTypes), std::end(kTypes),
                                  [&](const Type& t) { return t.name == text.substr(0, colon); });
  return type == std::end(kTypes) ? nullptr : type;
}

}  // namespace

Value valueFromTypedText(std::string_view text) {
  const Type* type = typeOf(text);
  return type == nullptr ? readUntyped(text) : type->read(text.substr(type->name.size() + 1));
}

bool hasType(std::string_view text) {
  return typeOf(text) != nullptr;
}

const std::vector<std::string_view>& typeNames() {
  static const std::vector<std::string_view> names = [] {
    std::vector<std::string_view> all;
    for (const Type& type : kTypes) all.push_back(type.name);
    return all;
  }();
  return names;
}

}  // namespace tools::vxcall
