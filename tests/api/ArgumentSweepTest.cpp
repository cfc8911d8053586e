/* Calls every public function with null, with objects of other classes and with extreme numbers. */
#include <VX/VX.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "support/Constants.h"
#include "support/Values.h"

namespace {

using namespace support;

/* Arguments, counted from 0, that may be null, of another class, or both. The headers say what that means. */
const std::string kOptional =
    " BQCopyDescription:0=null BQDataCreate:0=null BQDataCreateView:0=null BQEqual:0=null BQEqual:1=null "
    "BQHTTPMessageCreateRequest:2=null BQHTTPMessageSetHeaderFieldValue:2=null BQNumberCompare:0 "
    "BQNumberCompare:1 BQReadStreamRead:0 BQRunLoopRunInMode:0 BQStringCompare:0 BQStringCompare:1 "
    "BQStringConvertIANACharSetNameToEncoding:0 BQStringCreateWithBytes:0=null "
    "BQStringCreateWithBytesNoCopy:0=null BQURLCreateWithString:1 BQURLGetPortNumber:0 "
    "VXMethodInvocationAddDeserializationOverride:1 VXMethodInvocationAddDeserializationOverride:2 "
    "VXMethodInvocationSetParameters:1 VXMethodInvocationSetParameters:2 "
    "VXMethodInvocationSetProperty:1=other VXMethodResultCopyDescription:0 "
    "VXProtocolHandlerCopyFaultDocument:1 VXProtocolHandlerCopyFaultDocument:2 "
    "VXProtocolHandlerCopyReplyDictionary:1=other VXProtocolHandlerCopyReplyDictionary:2=other "
    "VXProtocolHandlerCopyReplyDocument:1 VXProtocolHandlerCopyReplyDocument:2=null "
    "VXProtocolHandlerCopyRequestDocument:1=other VXProtocolHandlerCopyRequestDocument:2 "
    "VXProtocolHandlerCopyRequestDocument:3 VXProtocolHandlerCopyRequestDocument:4 "
    "VXProtocolHandlerSetDeserializationOverride:1 VXProtocolHandlerSetDeserializationOverride:2 "
    "VXProtocolHandlerSetProperty:1=other vxBQDateToISO8601String:2 ";

template <class R, class... A>
R doNothing(A...) {
  return R();
}

thread_local const BQString* protocol;

/* A living instance of each class that functions take, immutable where there is a choice. */
struct Instance {
  static Value of(const BQArray*) { return Value::adopt(BQArrayCreateCopy(array({string("a")}))); }
  static Value of(const BQBoolean*) { return Value::retain(kBQBooleanTrue); }
  static Value of(const BQBundle*) {
    BQBundleRegister(BQSTR("sweep"), dictionary({}));
    return Value::retain(BQBundleGetBundleWithIdentifier(BQSTR("sweep")));
  }
  static Value of(const BQData*) { return blob("<a/>"); }
  static Value of(const BQDate*) { return date(0); }
  static Value of(const BQDictionary*) {
    return Value::adopt(BQDictionaryCreateCopy(dictionary({{"key", string("value")}})));
  }
  static Value of(const BQFileDescriptor*) {
    return Value::adopt(BQFileDescriptorCreate(0, 0, doNothing<void>, nullptr));
  }
  static Value of(const BQHTTPMessage*) {
    return Value::adopt(BQHTTPMessageCreateRequest(BQSTR("POST"), url("http://127.0.0.1:1/"), nullptr));
  }
  static Value of(const BQNumber*) { return integer(1); }
  static Value of(const BQReadStream*) {
    return Value::adopt(BQReadStreamCreateForHTTPRequest(of(static_cast<BQHTTPMessage*>(nullptr))));
  }
  static Value of(const BQRunLoop*) { return Value::retain(BQRunLoopGetCurrent()); }
  static Value of(const BQRunLoopSource*) {
    BQRunLoopSourceContext context = {};
    return Value::adopt(BQRunLoopSourceCreate(0, &context));
  }
  static Value of(const BQRunLoopTimer*) {
    return Value::adopt(BQRunLoopTimerCreate(0, 0, 0, 0, doNothing<void>, nullptr));
  }
  static Value of(const BQString*) { return string("text"); }
  static Value of(const BQTree*) { return tree("<a><b/></a>"); }
  static Value of(const BQURL*) { return url("http://127.0.0.1:1/"); }
  static Value of(const BQXMLNode*) { return Value::retain(BQXMLTreeGetNode(tree("<a/>"))); }
  static Value of(VXMethodInvocationRef) {
    return Value::adopt(VXMethodInvocationCreate(url("http://127.0.0.1:1/"), BQSTR("m"), protocol));
  }
  static Value of(VXProtocolHandlerRef) { return Value::adopt(VXProtocolHandlerCreate(nullptr, protocol)); }
};

template <class T>
concept Object = std::is_pointer_v<T> && requires {
  Instance::of(T());
};

template <class T, class... Classes>
constexpr bool isOneOf = (std::is_same_v<T, Classes> || ...);

/* One of the values that are passed for a parameter. */
struct Argument {
  std::string label;
  bool isWrong = false; /* a function that gets it does nothing and gives null, 0 or false */
  Value object{};
  bool isMemory = false; /* has 8 bytes that may be read */
  bool isSlot = false;   /* receives an object */
  int64_t number = 0;
  alignas(16) char memory[128] = "";
};

using Choices = std::vector<Argument>;
using Call = std::vector<Argument*>;

Choices chooseNumber(std::initializer_list<int64_t> numbers) {
  Choices choices;
  for (int64_t number : numbers) choices.push_back({std::to_string(number), false, {}, false, false, number});
  return choices;
}

template <class T>
Choices choose() {
  using Target = std::remove_pointer_t<T>;
  if constexpr (std::is_same_v<T, BQTypeRef>) {
    return {{"null", true}, {"object", false, string("object"), true}};
  } else if constexpr (Object<T>) {
    Value foreign = isOneOf<T, const BQString*, BQString*> ? Value::retain(kBQNull) : string("text"),
          instance = Instance::of(T());
    EXPECT_TRUE(instance) << "no instance to pass";
    bool isChanged = isOneOf<Target, BQArray, BQData, BQDictionary, BQString>;
    return {{"null", true}, {"other", true, foreign}, {text(instance.get()), isChanged, instance}};
  } else if constexpr (std::is_pointer_v<T> && !std::is_function_v<Target>) {
    if constexpr (!std::is_void_v<Target>) static_assert(sizeof(Target) <= sizeof Argument::memory);
    return {{"no memory"}, {"memory", false, {}, true, Object<Target>}};
  } else if constexpr (isOneOf<T, bool, BQRange> || !std::is_arithmetic_v<T>) {
    return chooseNumber({0, 1});
  } else {
    return chooseNumber({-1, 0, static_cast<int64_t>(std::numeric_limits<T>::max())});
  }
}

template <class T>
T pass(Argument& argument, int64_t largest) {
  int64_t number = std::min(argument.number, largest);
  if constexpr (std::is_function_v<std::remove_pointer_t<T>>) {
    return number == 0 ? nullptr : T(doNothing);
  } else if constexpr (std::is_pointer_v<T>) {
    if (argument.object) return static_cast<T>(argument.object.as<void>());
    return static_cast<T>(argument.isMemory ? static_cast<void*>(argument.memory) : nullptr);
  } else if constexpr (std::is_same_v<T, BQRange>) {
    return number == 0 ? BQRange{-1, 1} : BQRange{0, std::numeric_limits<BQIndex>::max()};
  } else if constexpr (std::is_class_v<T>) {
    return T();
  } else {
    return static_cast<T>(number);
  }
}

struct Result {
  bool isZero = true;
  BQTypeRef object = nullptr;
};

struct Function {
  std::string name;
  std::vector<Choices> (*choose)();
  Result (*call)(void (*function)(), const Call& call, int64_t largest);
  void (*function)();
};

template <class Type, class R, class... A, size_t... I>
Result callWith(Type* function, [[maybe_unused]] const Call& call, [[maybe_unused]] int64_t largest,
                std::index_sequence<I...>) {
  if constexpr (std::is_void_v<R>) {
    function(pass<A>(*call[I], largest)...);
    return {};
  } else {
    const R result = function(pass<A>(*call[I], largest)...), zero{};
    bool isZero = std::memcmp(&result, &zero, sizeof(R)) == 0;
    if constexpr (Object<R> || std::is_same_v<R, BQTypeRef>) return {isZero, result};
    return {isZero};
  }
}

template <class Type, class R, class... A>
Function makeFunction(const char* name, Type* function) {
  return {name, [] { return std::vector<Choices>{choose<A>()...}; },
          [](void (*untyped)(), const Call& call, int64_t largest) {
            return callWith<Type, R, A...>(reinterpret_cast<Type*>(untyped), call, largest,
                                           std::index_sequence_for<A...>());
          },
          reinterpret_cast<void (*)()>(function)};
}
template <class R, class... A>
Function sweep(const char* name, R (*function)(A...)) {
  return makeFunction<R(A...), R, A...>(name, function);
}
template <class R, class... A>
Function sweep(const char* name, R (*function)(A..., ...)) {
  return makeFunction<R(A..., ...), R, A...>(name, function);
}

const Function kFunctions[] = {
#include "EveryFunction.inc"
};

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

void check(const Function& function, const Call& call) {
  const std::string& name = function.name;
  auto countReferences = [&call] {
    BQIndex count = 0;
    for (const Argument* argument : call) count += BQGetRetainCount(argument->object);
    return count;
  };
  std::string label = name;
  int64_t largest = INT64_MAX;
  for (Argument* argument : call) {
    label += ", " + argument->label;
    std::memset(argument->memory, 0, sizeof argument->memory);
    if (argument->isMemory) largest = 8;
  }
  SCOPED_TRACE(label);
  BQIndex references = countReferences();
  if (contains(name, "Owned") || contains(name, "BQRelease")) BQRetain(call.back()->object);
  Result result = function.call(function.function, call, largest);
  bool isOwned = contains(name, "Create") || contains(name, "Copy") || contains(name, "BQRetain") ||
                 contains(name, "Invoke");
  if (isOwned) BQRelease(result.object);
  for (Argument* argument : call) {
    if (isOwned && argument->isSlot) BQRelease(*reinterpret_cast<BQTypeRef*>(argument->memory));
  }
  bool isWrong = false;
  for (size_t i = 0; i < call.size(); ++i) {
    const std::string argument = " " + name + ":" + std::to_string(i);
    bool isOptional =
        contains(kOptional, argument + " ") || contains(kOptional, argument + "=" + call[i]->label);
    isWrong |= call[i]->isWrong && !isOptional;
  }
  if (!isWrong) return;
  EXPECT_TRUE(result.isZero);
  EXPECT_EQ(countReferences(), references);
}

void checkCombinations(const Function& function, std::vector<Choices>& choices, Call& call) {
  if (call.size() == choices.size()) return check(function, call);
  for (Argument& argument : choices[call.size()]) {
    call.push_back(&argument);
    checkCombinations(function, choices, call);
    call.pop_back();
  }
}

class PublicFunction : public testing::TestWithParam<size_t> {};

/* On a thread, with which its run loop ends. */
TEST_P(PublicFunction, TakesEveryArgument) {
  std::thread([&function = kFunctions[GetParam()]] {
    for (const BQString* each : kProtocols) {
      protocol = each;
      std::vector<Choices> choices = function.choose();
      Call call;
      checkCombinations(function, choices, call);
      for (const Choices& parameter : choices) {
        const Argument& last = parameter.back();
        EXPECT_TRUE(!last.isWrong || text(last.object.get()) == last.label) << function.name << " changed it";
      }
    }
  }).join();
}

INSTANTIATE_TEST_SUITE_P(Sweep, PublicFunction, testing::Range(size_t{0}, std::size(kFunctions)),
                         [](const auto& info) { return kFunctions[info.param].name; });

TEST(NullArgument, GivesSomethingElseThanNothingToSomeFunctions) {
  char buffer[32] = "";
  EXPECT_EQ(vxBQDateToISO8601String(buffer, sizeof buffer, nullptr, 0), 20);
  EXPECT_STREQ(buffer, "2001-01-01T00:00:00Z");
  EXPECT_EQ(notation(Value::adopt(vxCreateDateFromISO8601(nullptr, 9)).get()), "@-001-11-30T00:00:00");
  EXPECT_EQ(text(nullptr), "(null)");
  EXPECT_EQ(text(Value::adopt(VXMethodResultCopyDescription(nullptr)).get()), "(null)");
  EXPECT_TRUE(BQEqual(nullptr, nullptr) && !BQEqual(nullptr, kBQNull));
  EXPECT_EQ(BQURLGetPortNumber(nullptr), -1);
  EXPECT_EQ(BQReadStreamRead(nullptr, nullptr, 0), -1);
  EXPECT_EQ(BQRunLoopRunInMode(nullptr, 0, false), kBQRunLoopRunFinished);
  EXPECT_EQ(BQStringConvertIANACharSetNameToEncoding(nullptr), kBQStringEncodingInvalidId);
  auto* other = reinterpret_cast<const BQString*>(kBQNull);
  EXPECT_EQ(BQStringCompare(other, BQSTR(""), kBQCompareExact), kBQCompareLessThan);
  EXPECT_EQ(BQStringCompare(BQSTR(""), nullptr, kBQCompareExact), kBQCompareGreaterThan);
  EXPECT_EQ(BQStringCompare(nullptr, other, kBQCompareExact), kBQCompareEqualTo);
  EXPECT_EQ(BQNumberCompare(nullptr, integer(-1)), kBQCompareLessThan);
  EXPECT_EQ(BQNumberCompare(integer(-1), nullptr), kBQCompareGreaterThan);
}

}  // namespace
