/* Several calls in one request. */
#include <string>

#include <BQ/BQ.h>

#include "Binding.h"
#include "Fault.h"
#include "MethodTable.h"
#include "Values.h"
#include "common/Text.h"

namespace tools::vxserve {
namespace {

constexpr BQIndex kMaximumCalls = 1000;
constexpr std::string_view kName = "system.multicall";

Value callOne(BQTypeRef item, Call& outer) {
  const BQDictionary* structure = asStruct(item);
  BQTypeRef name = BQDictionaryGetValue(structure, BQSTR("methodName"));
  const BQArray* parameters = asArray(BQDictionaryGetValue(structure, BQSTR("params")));
  if (kindOf(name) != Kind::text || parameters == nullptr) {
    throw Fault(kFaultInvalidParameters, "a call is a struct with a string methodName and an array params");
  }
  if (textOf(name) == kName) throw Fault(kFaultInvalidParameters, "system.multicall cannot call itself");
  const Method& method = outer.methods.find(textOf(name));
  Call call = {outer.methods, bindByPosition(method, itemsOf(parameters)), outer.delay};
  Value result = method.function(call);
  outer.delay = call.delay;
  return makeArray({result});
}

Value callOneOrFault(BQTypeRef item, Call& outer) {
  try {
    return callOne(item, outer);
  } catch (const Fault& fault) {
    return makeStruct(
        {{BQSTR("faultCode"), makeInteger(fault.code())}, {BQSTR("faultString"), makeText(fault.what())}});
  }
}

Value multiCall(Call& call) {
  if (BQArrayGetCount(call.array(0)) > kMaximumCalls) {
    throw Fault(kFaultInvalidParameters, "system.multicall makes at most 1000 calls");
  }
  std::vector<Value> results;
  for (BQTypeRef item : itemsOf(call.array(0))) results.push_back(callOneOrFault(item, call));
  return makeArray(results);
}

}  // namespace

Method makeMultiCall() {
  return {kName,
          {{Kind::array, {{Kind::array, "calls"}}}},
          "Makes up to 1000 calls, each a struct of methodName and params. In their place stand the results, "
          "each in an array of its own, and the faults, each a struct of faultCode and faultString.",
          multiCall};
}

}  // namespace tools::vxserve
