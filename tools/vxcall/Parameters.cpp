#include "Parameters.h"

#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include <BQ/BQArray.h>
#include <BQ/BQDictionary.h>

#include "Doubt.h"
#include "TypedText.h"
#include "common/Text.h"
#include "common/UsageError.h"

namespace tools::vxcall {
namespace {

constexpr std::string_view kNameStarts = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_";
constexpr std::string_view kNameCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_0123456789.-";

/* The length of the NAME in front of an equals sign; 0 if the argument has none. */
size_t nameLength(std::string_view argument) {
  size_t end = argument.find_first_not_of(kNameCharacters);
  bool named = end != std::string_view::npos && argument[end] == '=' && end > 0 &&
               kNameStarts.find(argument[0]) != std::string_view::npos;
  return named ? end : 0;
}

}  // namespace

Parameters parseParameters(const std::vector<std::string>& arguments) {
  auto count = static_cast<BQIndex>(arguments.size());
  auto values = BQAdopt(BQDictionaryCreateMutable(count, kBQDictionaryRetainKeys));
  auto order = BQAdopt(BQArrayCreateMutable(count));
  std::unordered_set<std::string> names;
  std::vector<std::string> notes;
  for (size_t i = 0; i < arguments.size(); ++i) {
    std::string_view argument = arguments[i];
    size_t length = nameLength(argument);
    std::string nameText = length > 0 ? std::string(argument.substr(0, length)) : "p" + std::to_string(i + 1);
    if (!names.insert(nameText).second) throw UsageError("there are two parameters named " + nameText);
    BQRef<const BQString> name = makeString(nameText);
    if (length > 0) argument.remove_prefix(length + 1);
    Value value = valueFromTypedText(argument);
    if (std::optional<std::string> note = doubtParameter(nameText, argument)) notes.push_back(*note);
    BQArrayAppendValue(order.get(), name.get());
    BQDictionarySetValue(values.get(), name.get(), value.get());
  }
  return {BQRef<const BQDictionary>::retain(values.get()), BQRef<const BQArray>::retain(order.get()),
          std::move(notes)};
}

}  // namespace tools::vxcall
