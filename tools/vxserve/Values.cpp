#include "Values.h"

#include <limits>
#include <string>

#include <BQ/BQ.h>

#include "Fault.h"
#include "Kind.h"

namespace tools::vxserve {

Value makeInteger(int64_t number) {
  if (number < std::numeric_limits<int32_t>::min() || number > std::numeric_limits<int32_t>::max()) {
    throw Fault(kFaultInvalidParameters, "the result " + std::to_string(number) + " is beyond 32 bits");
  }
  auto narrow = static_cast<int32_t>(number);
  return Value::adopt(BQNumberCreate(kBQNumberSInt32Type, &narrow));
}

Value makeReal(double number) {
  return Value::adopt(BQNumberCreate(kBQNumberDoubleType, &number));
}

Value makeBoolean(bool truth) {
  return Value::adopt(truth ? kBQBooleanTrue : kBQBooleanFalse);
}

Value makeText(std::string_view text) {
  const BQString* string = BQStringCreateWithUTF8(text.data(), static_cast<BQIndex>(text.size()));
  return Value::adopt(string != nullptr ? string : BQSTR(""));
}

Value makeData(std::span<const uint8_t> bytes) {
  return Value::adopt(BQDataCreate(bytes.data(), static_cast<BQIndex>(bytes.size())));
}

Value makeArray(std::span<const Value> values) {
  BQArray* array = BQArrayCreateMutable(static_cast<BQIndex>(values.size()));
  for (const Value& value : values) BQArrayAppendValue(array, value.get());
  return Value::adopt(array);
}

Value makeArray(std::initializer_list<Value> values) {
  return makeArray(std::span(values.begin(), values.size()));
}

Value makeStruct(std::initializer_list<Member> members) {
  BQDictionary* structure =
      BQDictionaryCreateMutable(static_cast<BQIndex>(members.size()), kBQDictionaryRetainKeys);
  for (const auto& [name, value] : members) BQDictionarySetValue(structure, name, value.get());
  return Value::adopt(structure);
}

std::vector<BQTypeRef> itemsOf(const BQArray* array) {
  std::vector<BQTypeRef> items(static_cast<size_t>(BQArrayGetCount(array)));
  for (size_t i = 0; i < items.size(); ++i) items[i] = BQArrayGetValueAtIndex(array, static_cast<BQIndex>(i));
  return items;
}

std::vector<std::pair<BQTypeRef, BQTypeRef>> membersOf(const BQDictionary* structure) {
  auto count = static_cast<size_t>(BQDictionaryGetCount(structure));
  std::vector<BQTypeRef> names(count);
  std::vector<BQTypeRef> values(count);
  BQDictionaryGetKeysAndValues(structure, names.data(), values.data());
  std::vector<std::pair<BQTypeRef, BQTypeRef>> members(count);
  for (size_t i = 0; i < count; ++i) members[i] = {names[i], values[i]};
  return members;
}

const BQArray* asArray(BQTypeRef value) {
  return kindOf(value) == Kind::array ? static_cast<const BQArray*>(value) : nullptr;
}

const BQDictionary* asStruct(BQTypeRef value) {
  return kindOf(value) == Kind::structure ? static_cast<const BQDictionary*>(value) : nullptr;
}

int32_t integerOf(BQTypeRef value, std::string_view purpose) {
  if (kindOf(value) != Kind::integer) {
    throw Fault(kFaultInvalidParameters, std::string(purpose) + " must be an int");
  }
  int32_t number = 0;
  BQNumberGetValue(static_cast<const BQNumber*>(value), kBQNumberSInt32Type, &number);
  return number;
}

}  // namespace tools::vxserve
