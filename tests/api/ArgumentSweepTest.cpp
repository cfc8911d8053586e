/* Calls every public function with null, with objects of other classes and with extreme numbers. */
#include <VX/VX.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <regex>
#include <thread>
#include <tuple>
#include <type_traits>

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

enum : int {
  kWrong = 1,    /* a function that gets it does nothing and gives null, 0 or false */
  kMemory = 2,   /* has 8 bytes that may be read */
  kSlot = 4,     /* receives an object */
  kLarge = 8,    /* more than the memory has */
  kConstant = 16 /* keeps its text */
};

/* One of the values that are passed for a parameter: the object, the memory, or else the value. */
template <class T>
struct Choice {
  std::string label;
  T value{};
  int flags = 0;
  Value object = Value::retain(nullptr);
  alignas(16) char memory[128] = "";

  bool has(int flag) const { return (flags & flag) != 0; }
  T pass() {
    if constexpr (std::is_pointer_v<T> && !std::is_function_v<std::remove_pointer_t<T>>) {
      if (object) return static_cast<T>(object.template as<void>());
      if (has(kMemory)) return static_cast<T>(static_cast<void*>(memory));
    }
    return value;
  }
};

template <class T>
std::vector<Choice<T>> choose() {
  using Target = std::remove_pointer_t<T>;
  if constexpr (std::is_same_v<T, BQTypeRef>) {
    return {{"null", {}, kWrong}, {"object", {}, kMemory, string("object")}};
  } else if constexpr (Object<T>) {
    const Value foreign = std::is_same_v<T, const BQString*> ? Value::retain(kBQNull) : string("text");
    const Value own = Instance::of(T());
    EXPECT_TRUE(own) << "no instance to pass";
    const bool isChanged = isOneOf<Target, BQArray, BQData, BQDictionary, BQString>;
    return {{"null", {}, kWrong},
            {"other", {}, kWrong, foreign},
            {text(own.get()), {}, isChanged ? kWrong | kConstant : 0, own}};
  } else if constexpr (std::is_function_v<Target>) {
    return {{"null"}, {"function", doNothing}};
  } else if constexpr (std::is_pointer_v<T>) {
    if constexpr (!std::is_void_v<Target>) static_assert(sizeof(Target) <= sizeof Choice<T>::memory);
    return {{"no memory"}, {"memory", {}, Object<Target> ? kMemory | kSlot : kMemory}};
  } else if constexpr (std::is_same_v<T, BQRange>) {
    return {{"outside", {-1, 1}}, {"large", {0, std::numeric_limits<BQIndex>::max()}}};
  } else if constexpr (std::is_arithmetic_v<T>) {
    return {{"0"}, {"8", T(8)}, {"-1", T(-1)}, {"large", std::numeric_limits<T>::max(), kLarge}};
  } else if constexpr (std::is_enum_v<T>) {
    return {{"0"}, {"1", T(1)}};
  } else {
    return {{"empty"}};
  }
}

const std::regex kTakes("Owned|BQRelease"), kGives("Create|Copy|BQRetain|Invoke"); /* references */

template <class R, class F, class... T>
void check(const std::string& name, F function, Choice<T>... chosen) {
  std::string label = name;
  bool isWrong = false, isZero = true;
  [[maybe_unused]] int i = 0, flags = 0;
  [[maybe_unused]] auto look = [&](const auto& choice) {
    label += ", " + choice.label;
    flags |= choice.flags;
    const std::string argument = name + ":" + std::to_string(i++) + "=" + choice.label;
    isWrong |= choice.has(kWrong) && !std::regex_match(argument, kOptional);
  };
  (look(chosen), ...);
  if ((flags & kMemory) != 0 && (flags & kLarge) != 0) return;
  SCOPED_TRACE(label);
  auto countReferences = [&] { return (BQIndex(0) + ... + BQGetRetainCount(chosen.object)); };
  const BQIndex references = countReferences();
  BQTypeRef last = nullptr;
  ((last = chosen.object.get()), ...);
  if (std::regex_search(name, kTakes)) BQRetain(last);
  if constexpr (std::is_void_v<R>) {
    function(chosen.pass()...);
  } else {
    const R result = function(chosen.pass()...), zero{};
    isZero = std::memcmp(&result, &zero, sizeof(R)) == 0;
    if (std::regex_search(name, kGives)) {
      if constexpr (Object<R> || std::is_same_v<R, BQTypeRef>) BQRelease(result);
      (BQRelease(chosen.has(kSlot) ? *reinterpret_cast<BQTypeRef*>(chosen.memory) : nullptr), ...);
    }
  }
  EXPECT_TRUE(!isWrong || (isZero && countReferences() == references));
  EXPECT_TRUE((true && ... && (!chosen.has(kConstant) || text(chosen.object.get()) == chosen.label)))
      << "changed";
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
