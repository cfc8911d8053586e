#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <deque>
#include <limits>
#include <random>
#include <sstream>
#include <thread>
#include <tuple>
#include <vector>

#include "support/PlatformValues.h"

namespace {

using namespace values;

int destroyedProbes;
BQTypeRef heldByProbes;

/* A class whose instances are counted as they end, and describe what all of them hold. */
BQTypeID makeProbeClass(const BQString* (*formatting)(BQTypeRef) = nullptr,
                        const BQString* (*debug)(BQTypeRef) = nullptr) {
  static std::deque<BQRuntimeClass> records; /* which stay for the life of the process */
  auto finalize = [](BQTypeRef object) {
    BQRelease(BQRetain(object)); /* must not finalise it again */
    ++destroyedProbes;
  };
  records.push_back({0, "Probe", nullptr, nullptr, finalize, nullptr, nullptr, formatting, debug});
  destroyedProbes = 0;
  return _BQRuntimeRegisterClass(&records.back());
}

Value makeProbe(BQTypeID typeID, BQIndex size = 0) {
  return Value::adopt(_BQRuntimeCreateInstance(typeID, size));
}

TEST(Object, ImmortalObjectsAreNotCounted) {
  for (BQTypeRef object : {BQTypeRef{kBQNull}, BQTypeRef{kBQBooleanTrue}, BQTypeRef{BQSTR("text")}}) {
    BQRelease(object);
    EXPECT_EQ(BQRetain(object), object);
    EXPECT_EQ(BQGetRetainCount(object), 1);
  }
}

TEST(Object, InstancesAreZeroedAndMadeOfRegisteredClassesOnly) {
  const BQTypeID typeID = makeProbeClass();
  const Value probe = makeProbe(typeID, 1000);
  const auto* bytes = static_cast<const char*>(probe.get()) + sizeof(BQRuntimeBase);
  EXPECT_EQ(std::string(bytes, 1000), std::string(1000, '\0'));
  EXPECT_EQ(_BQRuntimeCreateInstance(typeID, -1), nullptr);
  for (BQTypeID other : {BQStringGetTypeID(), BQDictionaryGetTypeID(), 0u, 1023u, 1024u, 65536u}) {
    EXPECT_EQ(_BQRuntimeCreateInstance(other, 0), nullptr) << other;
    EXPECT_EQ(text(own(BQCopyTypeIDDescription(other))) == "(none)", other == 0 || other > 1000) << other;
  }
}

/* In a process of its own: nothing can be registered afterwards. */
TEST(ObjectDeathTest, RegistrationEndsWithZeroWhenAllIdentifiersAreTaken) {
  auto registerMany = [] {
    int registered = 0;
    for (int i = 0; i < 2000; ++i) registered += makeProbeClass() != 0;
    std::exit(registered > 500 && registered < 2000 ? 0 : 1);
  };
  EXPECT_EXIT(registerMany(), testing::ExitedWithCode(0), "");
}

TEST(Object, ThreadsShareReferences) {
  Value probe = makeProbe(makeProbeClass());
  const auto share = [&probe] {
    for (int round = 0; round < 20000; ++round) BQRelease(BQRetain(probe.get()));
  };
  { std::jthread first(share), second(share), third(share); }
  EXPECT_TRUE(BQGetRetainCount(probe.get()) == 1 && destroyedProbes == 0);
  probe = nullptr;
  EXPECT_EQ(destroyedProbes, 1);
}

TEST(Object, NestingOfAnyDepthIsFreedOnASmallStack) {
  const BQTypeID typeID = makeProbeClass();
  Value chain;
  for (int i = 0; i < 300000; ++i) {
    chain =
        dictionary({{BQSTR("probe"), makeProbe(typeID).get()}, {BQSTR("next"), array({chain.get()}).get()}});
  }
  runOnSmallStack([&chain] { chain = nullptr; });
  EXPECT_EQ(destroyedProbes, 300000);
}

static_assert(!std::is_convertible_v<BQRef<const BQData>, BQRef<BQData>> &&
              !std::is_convertible_v<Value, BQRef<BQData>>);
static_assert(!std::is_convertible_v<BQData*, BQRef<BQData>>, "whether to adopt or to retain has to be said");

TEST(Ref, CountsItsReferencesOnceEach) {
  BQRef<BQData> adopted = BQAdopt(BQDataCreateMutable(0));
  BQData* object = adopted.get();
  auto retained = BQRef<BQData>::retain(object), copied = retained;
  Value moved = std::move(retained);
  EXPECT_TRUE(BQGetRetainCount(object) == 3 && retained == nullptr && moved.get() == object);
  BQRef<BQData>& itself = copied;
  copied = itself;
  EXPECT_EQ(BQGetRetainCount(object), 3);
  copied = nullptr;
  moved = Value();
  EXPECT_TRUE(BQGetRetainCount(object) == 1 && !copied) << "what was held before is released";
  EXPECT_TRUE(adopted.release() == object && BQGetRetainCount(object) == 1 && !adopted)
      << "released by nobody";
  BQRelease(object);
}

/* Below, at and beyond the sizes that get a block of their own, between small ones. */
TEST(Arena, PartsOutliveTheirDocumentOnAnyThread) {
  std::string document = "<a b='c'>";
  std::vector<std::pair<Value, std::string>> parts;
  for (size_t size : {1u, 7u, 16000u, 16383u, 16384u, 16385u, 65000u, 65536u, 200000u}) {
    for (int i = 0; i < 20; ++i)
      document +=
          parts.emplace_back(Value(), std::string(i % 2 == 0 ? size : 5, char('a' + i))).second + "<b/>";
  }
  document += "</a>";
  auto data = own(BQDataCreate(document.data(), std::ssize(document)));
  auto tree = own(BQXMLTreeCreateFromDataWithError(data.get(), nullptr));
  const BQTree* root = BQTreeGetFirstChild(tree.get());
  auto* info = static_cast<const BQXMLElementInfo*>(BQXMLNodeGetInfoPtr(BQXMLTreeGetNode(root)));
  auto attributes = Value::retain(info->attributes);
  const BQTree* child = BQTreeGetFirstChild(root);
  for (auto& part : parts) {
    part.first = Value::retain(BQXMLNodeGetString(BQXMLTreeGetNode(child)));
    child = BQTreeGetNextSibling(BQTreeGetNextSibling(child));
  }
  tree = nullptr;
  std::thread([&parts] { parts.erase(parts.begin(), parts.begin() + 100); }).join();
  for (const auto& [part, content] : parts)
    EXPECT_TRUE(text(static_cast<const BQString*>(part.get())) == content);
  parts.clear();
  EXPECT_EQ(BQGetRetainCount(attributes.get()), 1);
}

TEST(Bundle, StaysWhileItsDictionaryIsReplaced) {
  BQBundleRegister(mutableString("test").get(), dictionary({}).get());
  BQBundle* bundle = BQBundleGetBundleWithIdentifier(BQSTR("test"));
  BQBundleRegister(BQSTR("test"), dictionary({{kBQBundleVersionKey, BQSTR("1")}}).get());
  EXPECT_EQ(BQBundleGetBundleWithIdentifier(BQSTR("test")), bundle);
  EXPECT_EQ(BQDictionaryGetCount(own(BQBundleCopyInfoDictionary(bundle)).get()), 1);
}

/* What documents hold is described by their cases. */
TEST(Description, EveryKindOfValueIsReadable) {
  const float single = 0.1f;
  auto part = array({integer(1).get()}); /* beside itself, not inside */
  EXPECT_EQ(describe(array({own(BQNumberCreate(kBQNumberFloatType, &single)).get(), part.get(), part.get(),
                            dictionary({{part.get(), kBQNull}, {kBQNull, kBQNull}}).get()})
                         .get()),
            "[0.1, [1], [1], {[1]: null, null: null}]");
  const std::string letters(65, 'A'), some(" 41414141 41414141 41414141 41414141"),
      all = some + some + some + some;
  EXPECT_EQ(describe(own(BQDataCreate(letters.data(), 64)).get()), "<64 bytes" + all + ">");
  EXPECT_EQ(describe(own(BQDataCreate(letters.data(), 65)).get()), "<65 bytes" + all + " ...>");
  runOnSmallStack([] {
    const std::string atLimit = describe(nest(512, BQSTR("7")).get()),
                      beyond = describe(nest(513, BQSTR("7")).get());
    EXPECT_TRUE(atLimit.find("[\"7") != std::string::npos && atLimit.find("...") == std::string::npos);
    EXPECT_TRUE(beyond.find("7") == std::string::npos && beyond.find("...") != std::string::npos);
  });
}

TEST(Description, ComesFromTheClassAndShowsWhatHoldsItselfOnce) {
  auto format = [](BQTypeRef) { return BQStringCreateCopy(BQSTR("formatted")); };
  auto debug = [](BQTypeRef) { return BQStringCreateWithFormat(BQSTR("probe %@"), heldByProbes); };
  auto list = array({});
  auto holder = dictionary({{BQSTR("k"), list.get()}});
  heldByProbes = holder.get();
  const std::tuple<BQTypeID, const char*, const char*> kRows[] = {
      {makeProbeClass(format, debug), "probe {\"k\": [..., ...]}", "formatted"},
      {makeProbeClass(nullptr, debug), "probe {\"k\": [..., ...]}", "probe {"},
      {makeProbeClass(), "<Probe 0x", "<Probe 0x"}};
  for (const auto& [typeID, described, formatted] : kRows) {
    const Value probe = makeProbe(typeID);
    BQArrayAppendValue(list.get(), probe.get());
    BQArrayAppendValue(list.get(), list.get());
    EXPECT_TRUE(describe(probe.get()).starts_with(described)) << describe(probe.get());
    EXPECT_TRUE(text(own(BQStringCreateWithFormat(BQSTR("%@"), probe.get()))).starts_with(formatted));
    BQArrayRemoveAllValues(list.get());
  }
}

/* Holds every integer and every double, under valgrind too, which cuts long double to 64 bits. */
#ifdef __SIZEOF_FLOAT128__
using Exact = __float128;
#else
using Exact = long double;
#endif

/* Numbers beside their values. */
std::vector<std::pair<bq::Ref<const BQNumber>, Exact>> samples() {
  const int8_t small = 65;
  const float single = 65;
  std::vector<std::pair<bq::Ref<const BQNumber>, Exact>> result = {
      {own(BQNumberCreate(kBQNumberSInt8Type, &small)), 65},
      {own(BQNumberCreate(kBQNumberFloatType, &single)), 65}};
  std::istringstream words(
      "0 1 -1 65 -128 128 -32769 2147483647 -2147483648 2147483648 9007199254740992 9007199254740993 "
      "9223372036854775807 -9223372036854775808 nan -nan inf -inf 1e300 -1e300 0x1p63 -0x1p63 "
      "-0x1.0000000000001p63 0x1p53 0x1.fffffep127 0x1.fffffe0000001p127 65. -3.99 1.5 -.5 .1 0. -0. 5e-324");
  for (std::string word; words >> word;) {
    const bool isInteger = word.find_first_not_of("-0123456789") == std::string::npos;
    const int64_t number = std::strtoll(word.c_str(), nullptr, 10);
    const double value = std::strtod(word.c_str(), nullptr);
    result.push_back({isInteger ? integer(number) : real(value), isInteger ? Exact(number) : Exact(value)});
  }
  return result;
}

/* An integer type truncates and clamps. A floating type rounds, and only overflow is a loss. */
template <class T>
T convert(const Exact value, bool& isKept) {
  constexpr Exact kLowest = std::numeric_limits<T>::lowest(), kHighest = std::numeric_limits<T>::max();
  if constexpr (std::is_floating_point_v<T>) {
    isKept = !std::isinf(static_cast<T>(value)) || std::isinf(static_cast<double>(value));
    return static_cast<T>(value);
  }
  const Exact number = value == value ? value : 0;
  const T result = static_cast<T>(std::min(std::max(number, kLowest), kHighest));
  isKept = result == value;
  return result;
}

template <class T>
void expectValues(std::initializer_list<BQNumberType> types) {
  for (const auto& [number, value] : samples()) {
    for (BQNumberType type : types) {
      SCOPED_TRACE(describe(number.get()) + " as " + std::to_string(type));
      bool isKept = false;
      T expected = convert<T>(value, isKept), found[2] = {0, 7};
      EXPECT_EQ(BQNumberGetValue(number.get(), type, found), isKept);
      EXPECT_TRUE(found[0] == expected || std::isnan(found[0] + expected));
      EXPECT_EQ(found[1], 7) << "not written";
      auto copy = own(BQNumberCreate(type, &expected));
      EXPECT_TRUE(BQNumberGetType(copy.get()) == type &&
                  BQNumberIsFloatType(copy.get()) == std::is_floating_point_v<T>);
    }
  }
}

TEST(Number, IsGivenAsEachType) {
  expectValues<int8_t>({kBQNumberSInt8Type, kBQNumberCharType});
  expectValues<int16_t>({kBQNumberSInt16Type, kBQNumberShortType});
  expectValues<int32_t>({kBQNumberSInt32Type, kBQNumberIntType});
  expectValues<int64_t>({kBQNumberSInt64Type, kBQNumberLongType, kBQNumberLongLongType, kBQNumberIndexType});
  expectValues<float>({kBQNumberFloat32Type, kBQNumberFloatType});
  expectValues<double>({kBQNumberFloat64Type, kBQNumberDoubleType});
  int64_t value = 77;
  for (auto unknown : {BQNumberType(0), BQNumberType(15)}) {
    EXPECT_EQ(BQNumberCreate(unknown, &value), nullptr);
    EXPECT_TRUE(!BQNumberGetValue(integer(1).get(), unknown, &value) && value == 77);
  }
}

TEST(Number, OrdersAcrossTypesExactlyWithNaNFirst) {
  for (const auto& [left, first] : samples()) {
    for (const auto& [right, second] : samples()) {
      int order = first < second ? -1 : first > second ? 1 : int{second != second} - int{first != first};
      SCOPED_TRACE(describe(left.get()) + " " + describe(right.get()));
      EXPECT_EQ(BQNumberCompare(left.get(), right.get()), order);
      EXPECT_EQ(BQEqual(left.get(), right.get()), order == 0);
      EXPECT_TRUE(order != 0 || BQHash(left.get()) == BQHash(right.get()));
    }
  }
}

/* Fields that are out of range are carried. */
TEST(Date, ConvertsLikeTheCLibrary) {
  std::mt19937 random(20240229);
  auto between = [&random](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
  for (int i = 0; i < 20000; ++i) {
    SCOPED_TRACE(i);
    const double fraction = between(0, 3) / 4.0;
    tm fields = {};
    for (int* field : {&fields.tm_min, &fields.tm_hour, &fields.tm_mday, &fields.tm_mon})
      *field = between(-127, 126);
    fields.tm_year = between(-9000, 9000);
    fields.tm_sec = between(-100, 100);
    BQGregorianDate date = {fields.tm_year + 1900,  int8_t(fields.tm_mon + 1), int8_t(fields.tm_mday),
                            int8_t(fields.tm_hour), int8_t(fields.tm_min),     fields.tm_sec + fraction};
    BQAbsoluteTime time = BQGregorianDateGetAbsoluteTime(date);
    ASSERT_EQ(time, static_cast<double>(timegm(&fields)) + fraction - kBQAbsoluteTimeIntervalSince1970);
    date = BQAbsoluteTimeGetGregorianDate(time);
    ASSERT_EQ(std::tie(date.year, date.month, date.day),
              std::tuple(fields.tm_year + 1900, fields.tm_mon + 1, fields.tm_mday));
    ASSERT_EQ(std::tie(date.hour, date.minute, date.second),
              std::tuple(fields.tm_hour, fields.tm_min, fields.tm_sec + fraction));
  }
  EXPECT_NEAR(BQAbsoluteTimeGetCurrent() + kBQAbsoluteTimeIntervalSince1970,
              static_cast<double>(time(nullptr)), 1000);
}

TEST(Date, FieldsStayInTheirRanges) {
  for (double time :
       {-1e-20, -1e-9, 59.99999999999999, 3599.9999999999995, 86399.99999999999, -86400.00000000001}) {
    BQGregorianDate date = BQAbsoluteTimeGetGregorianDate(time);
    EXPECT_TRUE(date.second >= 0 && date.second < 60 && date.minute < 60 && date.hour < 24) << time;
    EXPECT_NEAR(BQGregorianDateGetAbsoluteTime(date), time, 1e-9);
  }
  EXPECT_EQ(describe(own(BQDateCreate(INFINITY)).get()), "2147483647-12-31T23:59:52Z");
  EXPECT_EQ(describe(own(BQDateCreate(-1e300)).get()), "-2147483648-01-01T00:00:00Z");
  EXPECT_EQ(describe(own(BQDateCreate(NAN)).get()), "2001-01-01T00:00:00Z");
}

}  // namespace
