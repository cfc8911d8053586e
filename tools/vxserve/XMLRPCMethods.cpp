/* The methods of XML-RPC. */
#include <numeric>
#include <string>

#include <BQ/BQ.h>

#include "Fault.h"
#include "Functions.h"
#include "MethodTable.h"
#include "Values.h"
#include "common/Text.h"

namespace tools::vxserve {
namespace {

Value sum(Call& call) {
  int64_t total = 0;
  for (auto [name, value] : membersOf(call.structure(0))) {
    total += integerOf(value, "the member '" + std::string(textOf(name)) + "'");
  }
  return makeInteger(total);
}

Value fault(Call& call) {
  throw Fault(call.integer(0), std::string(call.text(1)));
}

Value makeExampleArray() {
  return makeArray({makeInteger(1), makeText("two"),
                    makeArray({makeInteger(3), makeArray({makeReal(4.5), makeArray({})})}),
                    makeStruct({{BQSTR("five"), makeInteger(5)}})});
}

Value makeExampleStruct() {
  return makeStruct(
      {{BQSTR("name"), makeText("outer")},
       {BQSTR("inner"), makeStruct({{BQSTR("x"), makeInteger(1)},
                                    {BQSTR("list"), makeArray({makeBoolean(true), makeBoolean(false)})},
                                    {BQSTR("empty"), makeText("")}})}});
}

Value makeExampleDate() {
  return Value::adopt(BQDateCreate(BQGregorianDateGetAbsoluteTime({1998, 7, 17, 14, 8, 55})));
}

Value makeEveryByte() {
  std::vector<uint8_t> bytes(256);
  std::iota(bytes.begin(), bytes.end(), uint8_t{0});
  return makeData(bytes);
}

Value types(Call&) {
  return makeStruct({{BQSTR("int"), makeInteger(INT32_MIN)},
                     {BQSTR("double"), makeReal(-1234.5625)},
                     {BQSTR("boolean"), makeBoolean(true)},
                     {BQSTR("string"), makeText("<tag attr=\"x\"> & 'single' ]]> é € 日本")},
                     {BQSTR("dateTime"), makeExampleDate()},
                     {BQSTR("base64"), makeEveryByte()},
                     {BQSTR("array"), makeExampleArray()},
                     {BQSTR("struct"), makeExampleStruct()},
                     {BQSTR("emptyString"), makeText("")},
                     {BQSTR("emptyArray"), makeArray({})},
                     {BQSTR("emptyStruct"), makeStruct({})}});
}

std::vector<Signature> signaturesOfEcho() {
  std::vector<Signature> signatures;
  for (Kind kind : kKinds) signatures.push_back({kind, {{kind, "x"}}});
  return signatures;
}

std::vector<Method> makeBasicMethods() {
  return {
      {"echo", signaturesOfEcho(), "Gives back its parameter; an empty string if there is none.", echo},
      {"add",
       {{Kind::integer, {{Kind::integer, "a"}, {Kind::integer, "b"}}}},
       "The sum of two numbers.",
       add},
      {"sum",
       {{Kind::integer, {{Kind::structure, "numbers"}}}},
       "The sum of the members of a struct, all of which are ints.",
       sum},
      {"concat", {{Kind::text, {{Kind::text, "a"}, {Kind::text, "b"}}}}, "The two strings in one.", concat},
      {"fault",
       {{Kind::none, {{Kind::integer, "code"}, {Kind::text, "text"}}}},
       "Never gives a result: answers with a fault of that code and text.",
       fault},
      {"slow",
       {{Kind::text, {{Kind::integer, "seconds"}}}, {Kind::text, {{Kind::real, "seconds"}}}},
       "Answers \"done\", that many seconds later (at most 600).",
       slow},
      {"types", {{Kind::structure, {}}}, "A struct with a member of every type.", types},
  };
}

std::vector<Method> makeMethods() {
  std::vector<Method> methods = makeSystemMethods();
  methods.push_back(makeMultiCall());
  for (const auto& part : {makeBasicMethods(), makeValidatorMethods()}) {
    methods.insert(methods.end(), part.begin(), part.end());
  }
  return methods;
}

}  // namespace

const MethodTable& xmlrpcMethods() {
  static const MethodTable table(makeMethods());
  return table;
}

}  // namespace tools::vxserve
