#include "Output.h"

#include <vector>

#include <BQ/BQ.h>

#include "Json.h"
#include "common/Terminal.h"
#include "common/Text.h"

namespace tools::vxcall {
namespace {

bool isListable(BQTypeRef value) {
  return BQAdopt(BQPropertyListCreateXMLData(value)) != nullptr;
}

std::string describeKind(BQTypeRef value) {
  if (value == nullptr || value == kBQNull) return "null";
  auto name = BQAdopt(BQCopyTypeIDDescription(BQGetTypeID(value)));
  return "of the class " + std::string(textOf(name.get()));
}

}  // namespace

std::string formatJson(BQTypeRef value) {
  return escapeControls(jsonFromValue(value).dump(2)) + "\n";
}

std::string describeUnlistable(BQTypeRef value, const ValuePath& path) {
  if (BQGetTypeID(value) == BQArrayGetTypeID()) {
    const auto* array = static_cast<const BQArray*>(value);
    for (BQIndex i = 0; i < BQArrayGetCount(array); ++i) {
      BQTypeRef item = BQArrayGetValueAtIndex(array, i);
      if (!isListable(item)) return describeUnlistable(item, {&path, {}, i});
    }
  }
  if (BQGetTypeID(value) == BQDictionaryGetTypeID()) {
    const auto* members = static_cast<const BQDictionary*>(value);
    auto count = static_cast<size_t>(BQDictionaryGetCount(members));
    std::vector<BQTypeRef> names(count), values(count);
    BQDictionaryGetKeysAndValues(members, names.data(), values.data());
    for (size_t i = 0; i < count; ++i) {
      if (!isListable(values[i])) return describeUnlistable(values[i], {&path, textOf(names[i])});
    }
  }
  return path.text() + " is " + describeKind(value);
}

std::optional<std::string> formatPropertyList(BQTypeRef value) {
  if (value == nullptr) return "";
  auto data = BQAdopt(BQPropertyListCreateXMLData(value));
  if (!data) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(BQDataGetBytePtr(data.get())),
                     static_cast<size_t>(BQDataGetLength(data.get())));
}

}  // namespace tools::vxcall
