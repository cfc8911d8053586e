#include "Sendable.h"

#include <algorithm>
#include <string_view>

#include <BQ/BQ.h>

#include "Fault.h"
#include "Kind.h"
#include "Values.h"
#include "XMLText.h"
#include "common/Text.h"

namespace tools::vxserve {
namespace {

bool isOwnKey(std::string_view name) {
  return name.starts_with('/');
}

bool isSendableName(std::string_view name) {
  return !isOwnKey(name) && name.find_first_of(kMarkupCharacters) == std::string_view::npos;
}

bool isSendable(BQTypeRef value) {
  switch (kindOf(value)) {
    case Kind::array: {
      std::vector<BQTypeRef> items = itemsOf(static_cast<const BQArray*>(value));
      return std::all_of(items.begin(), items.end(), isSendable);
    }
    case Kind::structure: {
      auto members = membersOf(static_cast<const BQDictionary*>(value));
      return std::all_of(members.begin(), members.end(), [](auto& member) {
        return isSendableName(textOf(member.first)) && isSendable(member.second);
      });
    }
    case Kind::none:
      if (value == kBQNull) return true;
      throw Fault(kFaultInvalidParameters, "there is an int beyond 32 bits");
    default:
      return true;
  }
}

Value copy(BQTypeRef value);

Value copyArray(const BQArray* array) {
  std::vector<Value> items;
  for (BQTypeRef item : itemsOf(array)) items.push_back(copy(item));
  return makeArray(items);
}

Value copyStruct(const BQDictionary* structure) {
  BQDictionary* made = BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys);
  auto owned = Value::adopt(made);
  for (auto [name, value] : membersOf(structure)) {
    if (isOwnKey(textOf(name))) continue;
    BQDictionarySetValue(made, makeText(escapeMarkup(textOf(name))).get(), copy(value).get());
  }
  return owned;
}

Value copy(BQTypeRef value) {
  if (const BQArray* array = asArray(value)) return copyArray(array);
  if (const BQDictionary* structure = asStruct(value)) return copyStruct(structure);
  return Value::retain(value);
}

}  // namespace

Value makeSendable(BQTypeRef value) {
  return isSendable(value) ? Value::retain(value) : copy(value);
}

}  // namespace tools::vxserve
