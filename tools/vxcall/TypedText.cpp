#include "TypedText.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <BQ/BQ.h>
#include <VX/VXDate.h>

#include "Base64.h"
#include "DateText.h"
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
  std::string name(path);
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(name.c_str(), "rb"), std::fclose);
  std::vector<char> bytes;
  char chunk[65536];
  while (file != nullptr) {
    size_t count = std::fread(chunk, 1, sizeof chunk, file.get());
    bytes.insert(bytes.end(), chunk, chunk + count);
    if (count < sizeof chunk) break;
  }
  if (file == nullptr || std::ferror(file.get()) != 0) {
    throw UsageError("cannot read " + singleLine(name) + ": " + std::strerror(errno));
  }
  return makeData(bytes.data(), bytes.size());
}

Value readNil(std::string_view text) {
  if (!text.empty()) throw UsageError("nothing may follow nil:");
  return {};
}

Value readJson(std::string_view text) {
  Json json = Json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (json.is_discarded()) throw notA(text, "JSON");
  return json.is_null() ? Value() : valueFromJson(json);
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
