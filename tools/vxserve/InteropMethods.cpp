/* The methods of SOAP: those by which implementations test each other, and a few more. */
#include <string>

#include <BQ/BQ.h>

#include "Binding.h"
#include "Fault.h"
#include "Functions.h"
#include "MethodTable.h"
#include "Values.h"

namespace tools::vxserve {
namespace {

Value echoArrayOf(Kind kind, Call& call) {
  std::vector<Value> items;
  for (BQTypeRef item : itemsOf(call.array(0))) items.push_back(convert(item, kind, "each item"));
  return makeArray(items);
}

Value echoStringArray(Call& call) {
  return echoArrayOf(Kind::text, call);
}

Value echoIntegerArray(Call& call) {
  return echoArrayOf(Kind::integer, call);
}

Value echoMembers(const BQDictionary* structure) {
  auto member = [structure](const BQString* name, Kind kind) {
    return convert(BQDictionaryGetValue(structure, name), kind, BQStringGetUTF8Ptr(name));
  };
  return makeStruct({{BQSTR("varString"), member(BQSTR("varString"), Kind::text)},
                     {BQSTR("varInt"), member(BQSTR("varInt"), Kind::integer)},
                     {BQSTR("varFloat"), member(BQSTR("varFloat"), Kind::real)}});
}

Value echoStruct(Call& call) {
  return echoMembers(call.structure(0));
}

Value echoStructArray(Call& call) {
  std::vector<Value> items;
  for (BQTypeRef item : itemsOf(call.array(0))) {
    Value structure = convert(item, Kind::structure, "each item");
    items.push_back(echoMembers(asStruct(structure.get())));
  }
  return makeArray(items);
}

Value echoVoid(Call&) {
  return Value::adopt(kBQNull);
}

Value fault(Call& call) {
  throw Fault(kFaultInternalError, std::string(call.text(0)));
}

Method makeEcho(std::string_view name, Kind kind, std::string_view parameter,
                Method::Function function = echo) {
  return {name, {{kind, {{kind, parameter}}}}, "Gives back its parameter.", function};
}

}  // namespace

const MethodTable& soapMethods() {
  static const MethodTable table({
      makeEcho("echoString", Kind::text, "inputString"),
      makeEcho("echoInteger", Kind::integer, "inputInteger"),
      makeEcho("echoFloat", Kind::real, "inputFloat"),
      makeEcho("echoBoolean", Kind::boolean, "inputBoolean"),
      makeEcho("echoDate", Kind::date, "inputDate"),
      makeEcho("echoBase64", Kind::data, "inputBase64"),
      makeEcho("echoStringArray", Kind::array, "inputStringArray", echoStringArray),
      makeEcho("echoIntegerArray", Kind::array, "inputIntegerArray", echoIntegerArray),
      makeEcho("echoStruct", Kind::structure, "inputStruct", echoStruct),
      makeEcho("echoStructArray", Kind::array, "inputStructArray", echoStructArray),
      {"echoVoid", {{Kind::none, {}}}, "Gives nothing back.", echoVoid},
      {"add",
       {{Kind::integer, {{Kind::integer, "a"}, {Kind::integer, "b"}}}},
       "The sum of two numbers.",
       add},
      {"concat", {{Kind::text, {{Kind::text, "s"}, {Kind::text, "t"}}}}, "The two strings in one.", concat},
      {"fault", {{Kind::none, {{Kind::text, "message"}}}}, "Answers with a fault of that text.", fault},
      {"slow", {{Kind::text, {{Kind::real, "seconds"}}}}, "Answers \"done\", that much later.", slow},
  });
  return table;
}

}  // namespace tools::vxserve
