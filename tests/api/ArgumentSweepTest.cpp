/* Calls every public function with null, with objects of other classes and with extreme numbers. */
#include <VX/VX.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <regex>
#include <string>
#include <thread>
#include <tuple>
#include <type_traits>
#include <vector>

#include "support/Constants.h"
#include "support/Values.h"

namespace {

using namespace support;

/* Arguments, counted from 0, that may be null, of another class, or both. The headers say what that means. */
const std::regex kOptional(
    "BQ(Equal:.=null|(Number|String)Compare:.*|(CopyDescription|DataCreate(View)?):0=null|"
    "StringCreateWithBytes(NoCopy)?:0=null|StringConvertIANACharSetNameToEncoding:0=.*|RunLoopRunInMode:0=.*|"
    "HTTPMessage(CreateRequest|SetHeaderFieldValue):2=null|(ReadStreamRead|URLGetPortNumber):0=.*|"
    "URLCreateWithString:1=.*)|"
    "VXMethodInvocation(AddDeserializationOverride|SetParameters):[12]=.*|VXMethodResultCopyDescription:0=.*|"
    "VX(MethodInvocation|ProtocolHandler)SetProperty:1=other|vxBQDateToISO8601String:2=.*|"
    "VXProtocolHandler((CopyFaultDocument|SetDeserializationOverride):[12]=.*|CopyReplyDocument:1=.*|"
    "CopyReplyDictionary:[12]=other|CopyReplyDocument:2=null|CopyRequestDocument:(1=other|[234]=.*))");

template <class R, class... A>
R doNothing(A...) {
  return R();
}

thread_local const BQString* protocol;
constexpr auto adopt = Value::adopt;
const Value kURL = url("http://127.0.0.1:1/");

/* A living instance of each class that functions take, immutable where there is a choice. */
struct Instance {
  static Value of(const BQArray*) { return adopt(BQArrayCreateCopy(array({string("a")}))); }
  static Value of(const BQBoolean*) { return Value::retain(kBQBooleanTrue); }
  static Value of(const BQBundle*) {
    BQBundleRegister(BQSTR("sweep"), dictionary({}));
    return Value::retain(BQBundleGetBundleWithIdentifier(BQSTR("sweep")));
  }
  static Value of(const BQData*) { return blob("<a/>"); }
  static Value of(const BQDate*) { return date(0); }
  static Value of(const BQDictionary*) { return adopt(BQDictionaryCreateCopy(dictionary({{"k", date(0)}}))); }
  static Value of(const BQFileDescriptor*) { return adopt(BQFileDescriptorCreate(0, 0, doNothing, nullptr)); }
  static Value of(const BQHTTPMessage*) {
    return adopt(BQHTTPMessageCreateRequest(BQSTR("GET"), kURL, nullptr));
  }
  static Value of(const BQNumber*) { return integer(1); }
  static Value of(const BQReadStream*) {
    return adopt(BQReadStreamCreateForHTTPRequest(of(static_cast<BQHTTPMessage*>(nullptr))));
  }
  static Value of(const BQRunLoop*) { return Value::retain(BQRunLoopGetCurrent()); }
  static Value of(const BQRunLoopSource*) {
    BQRunLoopSourceContext context = {};
    return adopt(BQRunLoopSourceCreate(0, &context));
  }
  static Value of(const BQRunLoopTimer*) {
    return adopt(BQRunLoopTimerCreate(0, 0, 0, 0, doNothing, nullptr));
  }
  static Value of(const BQString*) { return string("text"); }
  static Value of(const BQTree*) { return tree("<a><b/></a>"); }
  static Value of(const BQURL*) { return kURL; }
  static Value of(const BQXMLNode*) { return Value::retain(BQXMLTreeGetNode(tree("<a/>"))); }
  static Value of(VXMethodInvocationRef) {
    return adopt(VXMethodInvocationCreate(kURL, BQSTR("m"), protocol));
  }
  static Value of(VXProtocolHandlerRef) { return adopt(VXProtocolHandlerCreate(nullptr, protocol)); }
};

template <class T>
concept Object = std::is_pointer_v<T> && requires {
  Instance::of(T());
};

template <class T, class... Classes>
constexpr bool isOneOf = (std::is_same_v<T, Classes> || ...);

/* One of the values that are passed for a parameter. */
template <class T>
struct Choice {
  std::string label;
  T value{};
  bool isWrong = false;  /* a function that gets it does nothing and gives null, 0 or false */
  Value object{};        /* passed instead of the value */
  bool isMemory = false; /* has 8 bytes that may be read */
  bool isSlot = false;   /* receives an object */
  bool isLarge = false;
  bool isImmutable = false;
  alignas(16) char memory[128] = "";

  std::string shown() const { return isImmutable ? text(object.get()) : label; }
  T pass() {
    if constexpr (std::is_pointer_v<T> && !std::is_function_v<std::remove_pointer_t<T>>) {
      if (object) return static_cast<T>(object.template as<void>());
      if (isMemory) return static_cast<T>(static_cast<void*>(memory));
    }
    return value;
  }
};

template <class T>
std::vector<Choice<T>> choose() {
  using Target = std::remove_pointer_t<T>;
  if constexpr (std::is_same_v<T, BQTypeRef>) {
    return {{"null", {}, true}, {"object", {}, false, string("object"), true}};
  } else if constexpr (Object<T>) {
    Value foreign = std::is_same_v<T, const BQString*> ? Value::retain(kBQNull) : string("text");
    Value instance = Instance::of(T());
    EXPECT_TRUE(instance) << "no instance to pass";
    bool isChanged = isOneOf<Target, BQArray, BQData, BQDictionary, BQString>;
    Choice<T> own = {text(instance.get()), {}, isChanged, instance};
    own.isImmutable = isChanged;
    return {{"null", {}, true}, {"other", {}, true, foreign}, own};
  } else if constexpr (std::is_function_v<Target>) {
    return {{"null"}, {"function", doNothing}};
  } else if constexpr (std::is_pointer_v<T>) {
    if constexpr (!std::is_void_v<Target>) static_assert(sizeof(Target) <= sizeof Choice<T>::memory);
    return {{"no memory"}, {"memory", {}, false, {}, true, Object<Target>}};
  } else if constexpr (std::is_same_v<T, BQRange>) {
    return {{"outside", {-1, 1}}, {"large", {0, std::numeric_limits<BQIndex>::max()}}};
  } else if constexpr (std::is_arithmetic_v<T>) {
    return {{"0"},
            {"8", T(8)},
            {"-1", T(-1)},
            {"large", std::numeric_limits<T>::max(), false, {}, false, false, true}};
  } else if constexpr (std::is_enum_v<T>) {
    return {{"0"}, {"1", T(1)}};
  } else {
    return {{"empty"}};
  }
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

template <class R, class F, class... T>
void check(const std::string& name, F function, Choice<T>... chosen) {
  std::string label = name;
  bool isWrong = false, isZero = true;
  [[maybe_unused]] int i = 0;
  [[maybe_unused]] auto look = [&](const auto& choice) {
    label += ", " + choice.label;
    const std::string argument = name + ":" + std::to_string(i++) + "=" + choice.label;
    isWrong |= choice.isWrong && !std::regex_match(argument, kOptional);
  };
  (look(chosen), ...);
  if ((false || ... || chosen.isMemory) && (false || ... || chosen.isLarge)) return;
  SCOPED_TRACE(label);
  auto countReferences = [&] { return (BQIndex(0) + ... + BQGetRetainCount(chosen.object)); };
  const BQIndex references = countReferences();
  BQTypeRef last = nullptr;
  ((last = chosen.object.get()), ...);
  if (contains(name, "Owned") || contains(name, "BQRelease")) BQRetain(last);
  if constexpr (std::is_void_v<R>) {
    function(chosen.pass()...);
  } else {
    const R result = function(chosen.pass()...), zero{};
    isZero = std::memcmp(&result, &zero, sizeof(R)) == 0;
    if (contains(name, "Create") || contains(name, "Copy") || contains(name, "BQRetain") ||
        contains(name, "Invoke")) {
      if constexpr (Object<R> || std::is_same_v<R, BQTypeRef>) BQRelease(result);
      (BQRelease(chosen.isSlot ? *reinterpret_cast<BQTypeRef*>(chosen.memory) : nullptr), ...);
    }
  }
  EXPECT_TRUE(!isWrong || (isZero && countReferences() == references));
  EXPECT_EQ(label, (name + ... + (", " + chosen.shown()))) << "changed";
}

template <class R, class... A>
struct Signature {};

/* Calls the function with each combination of choices. */
template <class F, class R, class... A, class... T>
void combine(const std::string& name, F function, Signature<R, A...> signature, const Choice<T>&... chosen) {
  if constexpr (sizeof...(T) == sizeof...(A)) {
    check<R>(name, function, chosen...);
  } else {
    for (const auto& next : choose<std::tuple_element_t<sizeof...(T), std::tuple<A...>>>())
      combine(name, function, signature, chosen..., next);
  }
}

template <class R, class... A>
void sweep(const char* name, R (*function)(A...)) {
  combine(name, function, Signature<R, A...>());
}
template <class R, class... A>
void sweep(const char* name, R (*function)(A..., ...)) {
  combine(name, function, Signature<R, A...>());
}

/* On a thread, with which its run loop ends. */
TEST(PublicFunctions, TakeEveryArgument) {
  for (const BQString* each : kProtocols) {
    std::thread([each] {
      protocol = each;
#include "EveryFunction.inc"
    }).join();
  }
}

TEST(NullArgument, GivesSomethingElseThanNothingToSomeFunctions) {
  char buffer[32] = "";
  auto* other = reinterpret_cast<const BQString*>(kBQNull);
  const std::pair<int64_t, int64_t> rows[] = {
      {vxBQDateToISO8601String(buffer, sizeof buffer, nullptr, 0), 20},
      {BQURLGetPortNumber(nullptr), -1},
      {BQReadStreamRead(nullptr, nullptr, 0), -1},
      {BQRunLoopRunInMode(nullptr, 0, false), kBQRunLoopRunFinished},
      {BQStringConvertIANACharSetNameToEncoding(nullptr), kBQStringEncodingInvalidId},
      {BQStringCompare(other, BQSTR(""), kBQCompareExact), kBQCompareLessThan},
      {BQStringCompare(BQSTR(""), nullptr, kBQCompareExact), kBQCompareGreaterThan},
      {BQStringCompare(nullptr, other, kBQCompareExact), kBQCompareEqualTo},
      {BQNumberCompare(nullptr, integer(-1)), kBQCompareLessThan},
      {BQNumberCompare(integer(-1), nullptr), kBQCompareGreaterThan},
  };
  for (const auto& [result, expected] : rows) EXPECT_EQ(result, expected) << &result - &rows->first;
  EXPECT_STREQ(buffer, "2001-01-01T00:00:00Z");
  EXPECT_EQ(notation(adopt(vxCreateDateFromISO8601(nullptr, 9)).get()), "@-001-11-30T00:00:00");
}

}  // namespace
