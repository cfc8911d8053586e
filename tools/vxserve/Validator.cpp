/* The suite that validates implementations of XML-RPC. */
#include <algorithm>
#include <string>

#include <BQ/BQ.h>

#include "Fault.h"
#include "Functions.h"
#include "MethodTable.h"
#include "Values.h"
#include "common/Text.h"

namespace tools::vxserve {
namespace {

int64_t sumOfStooges(const BQDictionary* structure) {
  int64_t sum = 0;
  for (const BQString* name : {BQSTR("moe"), BQSTR("larry"), BQSTR("curly")}) {
    sum += integerOf(BQDictionaryGetValue(structure, name), "the member '" + std::string(textOf(name)) + "'");
  }
  return sum;
}

const BQDictionary* memberStruct(const BQDictionary* structure, const BQString* name) {
  if (const BQDictionary* member = asStruct(BQDictionaryGetValue(structure, name))) return member;
  throw Fault(kFaultInvalidParameters, "the member '" + std::string(textOf(name)) + "' must be a struct");
}

Value arrayOfStructsTest(Call& call) {
  int64_t sum = 0;
  for (BQTypeRef item : itemsOf(call.array(0))) {
    const BQDictionary* structure = asStruct(item);
    if (structure == nullptr) throw Fault(kFaultInvalidParameters, "the array must hold structs");
    sum += integerOf(BQDictionaryGetValue(structure, BQSTR("curly")), "the member 'curly'");
  }
  return makeInteger(sum);
}

Value countTheEntities(Call& call) {
  auto count = [text = call.text(0)](char c) { return makeInteger(std::count(text.begin(), text.end(), c)); };
  return makeStruct({{BQSTR("ctLeftAngleBrackets"), count('<')},
                     {BQSTR("ctRightAngleBrackets"), count('>')},
                     {BQSTR("ctAmpersands"), count('&')},
                     {BQSTR("ctApostrophes"), count('\'')},
                     {BQSTR("ctQuotes"), count('"')}});
}

Value easyStructTest(Call& call) {
  return makeInteger(sumOfStooges(call.structure(0)));
}

Value manyTypesTest(Call& call) {
  return makeArray(call.arguments);
}

Value moderateSizeArrayCheck(Call& call) {
  std::vector<BQTypeRef> items = itemsOf(call.array(0));
  bool areTexts =
      std::all_of(items.begin(), items.end(), [](BQTypeRef item) { return kindOf(item) == Kind::text; });
  if (items.empty() || !areTexts) throw Fault(kFaultInvalidParameters, "the array must hold strings");
  return makeText(std::string(textOf(items.front())).append(textOf(items.back())));
}

Value nestedStructTest(Call& call) {
  const BQDictionary* year = memberStruct(call.structure(0), BQSTR("2000"));
  return makeInteger(sumOfStooges(memberStruct(memberStruct(year, BQSTR("04")), BQSTR("01"))));
}

Value simpleStructReturnTest(Call& call) {
  int64_t number = call.integer(0);
  return makeStruct({{BQSTR("times10"), makeInteger(number * 10)},
                     {BQSTR("times100"), makeInteger(number * 100)},
                     {BQSTR("times1000"), makeInteger(number * 1000)}});
}

}  // namespace

std::vector<Method> makeValidatorMethods() {
  return {
      {"validator1.arrayOfStructsTest",
       {{Kind::integer, {{Kind::array, "structs"}}}},
       "The sum of the members curly of an array of structs.",
       arrayOfStructsTest},
      {"validator1.countTheEntities",
       {{Kind::structure, {{Kind::text, "text"}}}},
       "How many of each of the characters that XML escapes are in a string.",
       countTheEntities},
      {"validator1.easyStructTest",
       {{Kind::integer, {{Kind::structure, "stooges"}}}},
       "The sum of the members moe, larry and curly.",
       easyStructTest},
      {"validator1.echoStructTest",
       {{Kind::structure, {{Kind::structure, "x"}}}},
       "Gives back a struct.",
       echo},
      {"validator1.manyTypesTest",
       {{Kind::array,
         {{Kind::integer, "number"},
          {Kind::boolean, "truth"},
          {Kind::text, "text"},
          {Kind::real, "real"},
          {Kind::date, "date"},
          {Kind::data, "bytes"}}}},
       "An array of the six parameters.",
       manyTypesTest},
      {"validator1.moderateSizeArrayCheck",
       {{Kind::text, {{Kind::array, "texts"}}}},
       "The first and the last string of an array, in one.",
       moderateSizeArrayCheck},
      {"validator1.nestedStructTest",
       {{Kind::integer, {{Kind::structure, "calendar"}}}},
       "The sum of moe, larry and curly of 1 April 2000 in a struct of years, months and days.",
       nestedStructTest},
      {"validator1.simpleStructReturnTest",
       {{Kind::structure, {{Kind::integer, "number"}}}},
       "A struct of the number times 10, times 100 and times 1000.",
       simpleStructReturnTest},
  };
}

}  // namespace tools::vxserve
