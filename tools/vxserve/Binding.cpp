#include "Binding.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>

#include <BQ/BQ.h>

#include "Fault.h"
#include "Values.h"
#include "common/Text.h"

namespace tools::vxserve {
namespace {

/* Whether the parameters fit the signature; the arguments are made on the way. */
bool fit(const Signature& signature, std::span<const BQTypeRef> parameters, std::vector<Value>& arguments) {
  arguments.clear();
  arguments.reserve(signature.parameters.size());
  size_t next = 0;
  for (const Parameter& wanted : signature.parameters) {
    if (next < parameters.size() && kindOf(parameters[next]) == wanted.kind) {
      arguments.push_back(Value::retain(parameters[next++]));
    } else if (wanted.kind == Kind::text) {
      arguments.push_back(makeText(""));
    } else {
      return false;
    }
  }
  return next == parameters.size();
}

Value emptyOf(Kind kind) {
  switch (kind) {
    case Kind::text:
      return makeText("");
    case Kind::data:
      return makeData({});
    case Kind::array:
      return makeArray({});
    default:
      return {};
  }
}

template <typename Number>
std::optional<Number> read(std::string_view text) {
  Number number{};
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

Value numberFromText(std::string_view text, Kind kind) {
  if (kind == Kind::real) {
    std::optional<double> real = read<double>(text);
    return real ? makeReal(*real) : Value();
  }
  std::optional<int32_t> integer = read<int32_t>(text);
  return integer ? makeInteger(*integer) : Value();
}

/* The conversions between kinds that clients mix up: they guess, or send a text without its type. */
Value converted(BQTypeRef value, Kind from, Kind to) {
  if (from == Kind::none) return value == kBQNull ? emptyOf(to) : Value();
  bool isNumber = from == Kind::integer || from == Kind::real;
  if (to == Kind::text && (isNumber || from == Kind::boolean)) return Value::adopt(BQCopyDescription(value));
  if (from == Kind::text && (to == Kind::integer || to == Kind::real))
    return numberFromText(textOf(value), to);
  if (from == Kind::integer && to == Kind::real) return makeReal(integerOf(value, ""));
  if (from == Kind::integer && to == Kind::boolean) return makeBoolean(integerOf(value, "") != 0);
  return {};
}

bool isWanted(const std::vector<Parameter>& wanted, BQTypeRef name) {
  return std::any_of(wanted.begin(), wanted.end(),
                     [text = textOf(name)](const Parameter& parameter) { return parameter.name == text; });
}

/* The name under which the parameter at a place was sent; borrowed, null if it was not. */
BQTypeRef nameFor(const std::vector<Parameter>& wanted, size_t place, const BQArray* order) {
  for (BQTypeRef name : itemsOf(order)) {
    if (textOf(name) == wanted[place].name) return name;
  }
  BQTypeRef name = BQArrayGetValueAtIndex(order, static_cast<BQIndex>(place));
  return isWanted(wanted, name) ? nullptr : name;
}

}  // namespace

std::vector<Value> bindByPosition(const Method& method, std::span<const BQTypeRef> parameters) {
  std::vector<Value> arguments;
  for (const Signature& signature : method.signatures) {
    if (fit(signature, parameters, arguments)) return arguments;
  }
  throw Fault(kFaultInvalidParameters, "wrong parameters; the call is " + usageOf(method));
}

Value convert(BQTypeRef value, Kind kind, std::string_view purpose) {
  Kind from = kindOf(value);
  if (from == kind) return Value::retain(value);
  Value result = converted(value, from, kind);
  if (result) return result;
  throw Fault(kFaultInvalidParameters,
              std::string(purpose) + " must be of the type " + std::string(nameOf(kind)));
}

std::vector<Value> bindByName(const Method& method, const BQDictionary* parameters, const BQArray* order) {
  const std::vector<Parameter>& wanted = method.signatures.front().parameters;
  std::vector<Value> arguments;
  for (size_t i = 0; i < wanted.size(); ++i) {
    BQTypeRef value = BQDictionaryGetValue(parameters, nameFor(wanted, i, order));
    if (value == nullptr) {
      throw Fault(kFaultInvalidParameters,
                  std::string(wanted[i].name) + " is missing; the call is " + usageOf(method));
    }
    arguments.push_back(convert(value, wanted[i].kind, wanted[i].name));
  }
  return arguments;
}

}  // namespace tools::vxserve
