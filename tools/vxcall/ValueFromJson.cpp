#include <cstdint>

#include <string>

#include <BQ/BQ.h>

#include "Json.h"
#include "Number.h"
#include "common/Text.h"
#include "common/UsageError.h"

namespace tools::vxcall {
namespace {

/* One level further in than its caller; the recursion is bounded by the nesting that is allowed. */
Value valueAtDepth(const Json& json, int depth);

Value valueFromInteger(const Json& json) {
  /* A number beyond 64 bits was read as a double; one that needs the 64th bit is unsigned. */
  if (json.is_number_unsigned() && json.get<uint64_t>() > INT64_MAX) throw integerTooLarge(json.dump());
  return makeInteger(json.get<int64_t>());
}

Value arrayFromJson(const Json& json, int depth) {
  auto array = BQAdopt(BQArrayCreateMutable(static_cast<BQIndex>(json.size())));
  for (const Json& element : json) BQArrayAppendValue(array.get(), valueAtDepth(element, depth).get());
  return Value::retain(array.get());
}

Value dictionaryFromJson(const Json& json, int depth) {
  auto dictionary =
      BQAdopt(BQDictionaryCreateMutable(static_cast<BQIndex>(json.size()), kBQDictionaryRetainKeys));
  for (const auto& [name, member] : json.items()) {
    BQDictionarySetValue(dictionary.get(), makeString(name).get(), valueAtDepth(member, depth).get());
  }
  return Value::retain(dictionary.get());
}

Value valueAtDepth(const Json& json, int depth) {
  if (json.is_structured() && depth > kMaximumNesting) {
    throw UsageError("a JSON value is nested deeper than " + std::to_string(kMaximumNesting) + " levels");
  }
  switch (json.type()) {
    case Json::value_t::boolean:
      return Value::retain(json.get<bool>() ? kBQBooleanTrue : kBQBooleanFalse);
    case Json::value_t::number_integer:
    case Json::value_t::number_unsigned:
      return valueFromInteger(json);
    case Json::value_t::number_float:
      return makeDouble(json.get<double>());
    case Json::value_t::string:
      return Value::retain(makeString(json.get_ref<const std::string&>()).get());
    case Json::value_t::array:
      return arrayFromJson(json, depth + 1);
    case Json::value_t::object:
      return dictionaryFromJson(json, depth + 1);
    default:
      return Value::retain(kBQNull);
  }
}

}  // namespace

Value valueFromJson(const Json& json) {
  return valueAtDepth(json, 1);
}

}  // namespace tools::vxcall
