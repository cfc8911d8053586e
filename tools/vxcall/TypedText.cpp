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
  return UsageError("'" + singleLine(text) + "' is not " + std::string(kind));
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

/* What to say of a file that is not JSON from one byte on. */
UsageError notJson(const std::string& path, std::string_view text, size_t byte) {
  auto line =
      1 + std::count(text.begin(), text.begin() + static_cast<ptrdiff_t>(std::min(byte, text.size())), '\n');
  return UsageError(nameOfInput(path) + " is not JSON in line " + std::to_string(line));
}

Value readJson(std::string_view text) {
  const bool isFile = text.starts_with('@');
  const std::string path(isFile ? text.substr(1) : "");
  const std::string contents = isFile ? readInput(path) : std::string(text);
  try {
    Json json = Json::parse(contents);
    return json.is_null() ? Value() : valueFromJson(json);
  } catch (const Json::parse_error& error) {
    if (isFile) throw notJson(path, contents, error.byte - 1);
    throw UsageError("'" + singleLine(text) + "' is not JSON; json:@FILE reads it from a file");
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

}  // namespace

Value valueFromTypedText(std::string_view text) {
  size_t colon = text.find(':');
  if (colon != std::string_view::npos) {
    const auto* type = std::find_if(std::begin(kTypes), std::end(kTypes),
                                    [&](const Type& t) { return t.name == text.substr(0, colon); });
    if (type != std::end(kTypes)) return type->read(text.substr(colon + 1));
  }
  return readUntyped(text);
}

}  // namespace tools::vxcall
