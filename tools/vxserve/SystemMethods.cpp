/* Introspection: what the table of methods says about itself. */
#include <string>

#include "MethodTable.h"
#include "Values.h"

namespace tools::vxserve {
namespace {

Value listMethods(Call& call) {
  std::vector<Value> names;
  for (const Method& method : call.methods.methods()) names.push_back(makeText(method.name));
  return makeArray(names);
}

Value methodHelp(Call& call) {
  return makeText(call.methods.find(call.text(0)).help);
}

/* The type of the result, then those of the parameters. */
Value makeSignature(const Signature& signature) {
  std::vector<Value> types = {makeText(nameOf(signature.result))};
  for (const Parameter& parameter : signature.parameters) types.push_back(makeText(nameOf(parameter.kind)));
  return makeArray(types);
}

Value methodSignature(Call& call) {
  std::vector<Value> signatures;
  for (const Signature& signature : call.methods.find(call.text(0)).signatures) {
    signatures.push_back(makeSignature(signature));
  }
  return makeArray(signatures);
}

}  // namespace

std::vector<Method> makeSystemMethods() {
  return {
      {"system.listMethods", {{Kind::array, {}}}, "The names of all methods.", listMethods},
      {"system.methodHelp", {{Kind::text, {{Kind::text, "method"}}}}, "What a method does.", methodHelp},
      {"system.methodSignature",
       {{Kind::array, {{Kind::text, "method"}}}},
       "The ways to call a method: of each the type of the result and those of the parameters.",
       methodSignature},
  };
}

}  // namespace tools::vxserve
