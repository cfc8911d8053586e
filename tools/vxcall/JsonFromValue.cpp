#include <vector>

#include <BQ/BQ.h>
#include <VX/VXDate.h>
#include <VX/VXTypes.h>

#include "Base64.h"
#include "Json.h"
#include "common/Text.h"

namespace tools::vxcall {
namespace {

Json jsonFromDate(const BQDate* date) {
  char text[64];
  int length = vxBQDateToISO8601String(text, sizeof text, date, 0);
  return std::string(text, static_cast<size_t>(length));
}

Json jsonFromNumber(const BQNumber* number) {
  if (BQNumberIsFloatType(number)) {
    double value = 0;
    BQNumberGetValue(number, kBQNumberFloat64Type, &value);
    return value;
  }
  int64_t value = 0;
  BQNumberGetValue(number, kBQNumberSInt64Type, &value);
  return value;
}

Json jsonFromArray(const BQArray* array) {
  Json json = Json::array();
  for (BQIndex i = 0; i < BQArrayGetCount(array); ++i) {
    json.push_back(jsonFromValue(BQArrayGetValueAtIndex(array, i)));
  }
  return json;
}

Json jsonFromDictionary(const BQDictionary* dictionary) {
  size_t count = static_cast<size_t>(BQDictionaryGetCount(dictionary));
  std::vector<BQTypeRef> keys(count);
  std::vector<BQTypeRef> values(count);
  BQDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());

  Json json = Json::object();
  /* The keys differ already. Json's own insertion looks through all members that are there. */
  auto& members = json.get_ref<Json::object_t&>();
  members.reserve(count);
  for (size_t i = 0; i < count; ++i) members.emplace_back(textOf(keys[i]), jsonFromValue(values[i]));
  return json;
}

Json jsonFromMessage(const BQHTTPMessage* message) {
  auto statusLine = BQAdopt(BQHTTPMessageCopyResponseStatusLine(message));
  auto headers = BQAdopt(BQHTTPMessageCopyAllHeaderFields(message));
  Json json = Json::object();
  json["statusLine"] = jsonFromValue(statusLine.get());
  json["headers"] = jsonFromValue(headers.get());
  return json;
}

Json jsonFromOther(BQTypeRef value) {
  if (BQGetTypeID(value) == BQHTTPMessageGetTypeID()) {
    return jsonFromMessage(static_cast<const BQHTTPMessage*>(value));
  }
  auto description = BQAdopt(BQCopyDescription(value));
  return textOf(description.get());
}

}  // namespace

Json jsonFromValue(BQTypeRef value) {
  if (value == nullptr) return nullptr;
  switch (VXGetVXTypeIDFromBQType(value)) {
    case kVXTypeNull:
      return nullptr;
    case kVXTypeBoolean:
      return BQBooleanGetValue(static_cast<const BQBoolean*>(value));
    case kVXTypeInteger:
    case kVXTypeDouble:
      return jsonFromNumber(static_cast<const BQNumber*>(value));
    case kVXTypeString:
      return textOf(value);
    case kVXTypeDate:
      return jsonFromDate(static_cast<const BQDate*>(value));
    case kVXTypeData: {
      const auto* data = static_cast<const BQData*>(value);
      return encodeBase64({BQDataGetBytePtr(data), static_cast<size_t>(BQDataGetLength(data))});
    }
    case kVXTypeArray:
      return jsonFromArray(static_cast<const BQArray*>(value));
    case kVXTypeDictionary:
      return jsonFromDictionary(static_cast<const BQDictionary*>(value));
    case kVXTypeUnknown:
      break;
  }
  return jsonFromOther(value);
}

}  // namespace tools::vxcall
