#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <deque>
#include <string>
#include <thread>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/object/Arena.h"
#include "platform/text/StringImpl.h"
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
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([probe] {
      for (int round = 0; round < 20000; ++round) BQRelease(BQRetain(probe.get()));
    });
  }
  for (std::thread& thread : threads) thread.join();
  threads.clear();
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

static_assert(std::is_convertible_v<BQRef<BQData>, BQRef<const BQData>> &&
              std::is_convertible_v<BQRef<BQData>, Value>);
static_assert(!std::is_convertible_v<BQRef<const BQData>, BQRef<BQData>> &&
              !std::is_convertible_v<Value, BQRef<BQData>>);
static_assert(!std::is_convertible_v<BQData*, BQRef<BQData>>, "whether to adopt or to retain has to be said");

TEST(Ref, CountsItsReferencesOnceEach) {
  BQRef<BQData> adopted = BQAdopt(BQDataCreateMutable(0));
  BQData* object = adopted.get();
  auto count = [object] { return BQGetRetainCount(object); };
  auto retained = BQRef<BQData>::retain(object), copied = retained;
  Value moved = std::move(retained);
  EXPECT_TRUE(count() == 3 && retained == nullptr && moved.get() == object) << "a move adds none";
  BQRef<BQData>& itself = copied;
  copied = itself;
  EXPECT_EQ(count(), 3);
  copied = nullptr;
  moved = Value();
  EXPECT_TRUE(count() == 1 && !copied) << "what was held before is released";
  EXPECT_TRUE(adopted.release() == object && count() == 1 && !adopted) << "released by nobody";
  BQRelease(object);
}

/* Below, at and beyond the sizes that get a block of their own, between small ones. */
TEST(Arena, ObjectsOfEverySizeFindTheirArenaAndKeepItOnAnyThread) {
  bq::Arena* arena = bq::Arena::create();
  auto kept = string("kept");
  arena->keep(BQRetain(kept.get()));
  std::vector<std::pair<Value, std::string>> strings;
  for (size_t size : {0u, 1u, 7u, 16000u, 16383u, 16384u, 16385u, 65000u, 65536u, 200000u}) {
    for (int i = 0; i < 20; ++i) {
      std::string content(i % 2 == 0 ? size : 5, static_cast<char>('a' + i));
      strings.emplace_back(Value::retain(bq::makeArenaString(*arena, content.data(), content.size())),
                           content);
      EXPECT_EQ(bq::Arena::of(strings.back().first.get()), arena);
      EXPECT_EQ(reinterpret_cast<uintptr_t>(strings.back().first.get()) % 8, 0u);
    }
  }
  arena->release();
  EXPECT_EQ(BQGetRetainCount(kept.get()), 2);
  std::thread([&strings] { strings.erase(strings.begin(), strings.begin() + 100); }).join();
  for (const auto& [string, content] : strings)
    EXPECT_TRUE(text(static_cast<const BQString*>(string.get())) == content);
  EXPECT_EQ(BQGetRetainCount(strings[0].first.get()), 100);
  strings.clear();
  EXPECT_EQ(BQGetRetainCount(kept.get()), 1);
}

TEST(Bundle, StaysWhileItsDictionaryIsReplaced) {
  BQBundleRegister(mutableString("test").get(), dictionary({}).get());
  BQBundle* bundle = BQBundleGetBundleWithIdentifier(BQSTR("test"));
  BQBundleRegister(BQSTR("test"), dictionary({{kBQBundleVersionKey, BQSTR("1")}}).get());
  EXPECT_EQ(BQBundleGetBundleWithIdentifier(BQSTR("test")), bundle);
  EXPECT_EQ(BQDictionaryGetCount(own(BQBundleCopyInfoDictionary(bundle)).get()), 1);
}

TEST(Description, EveryKindOfValueIsReadable) {
  const float single = 0.1f;
  const std::string bytes(65, 'A');
  std::string shown;
  for (int i = 0; i < 16; ++i) shown += " 41414141";
  auto part = array({integer(1).get()});
  const std::pair<Value, std::string> kRows[] = {
      {Value::retain(kBQNull), "null"},
      {real(0.1), "0.1"},
      {real(1e300), "1e+300"},
      {real(NAN), "nan"},
      {own(BQNumberCreate(kBQNumberFloatType, &single)), "0.1"},
      {own(BQDateCreate(-77622665)), "1998-07-17T14:08:55Z"},
      {own(BQDataCreate("\x00\xFFz!9", 5)), "<5 bytes 00ff7a21 39>"},
      {own(BQDataCreate(nullptr, 0)), "<0 bytes>"},
      {own(BQDataCreate(bytes.data(), 64)), "<64 bytes" + shown + ">"},
      {own(BQDataCreate(bytes.data(), 65)), "<65 bytes" + shown + " ...>"},
      {array({nullptr, BQSTR("a\"\\\n\t\r%@é"), kBQBooleanFalse}),
       "[(null), \"a\\\"\\\\\\n\\t\\r%@é\", false]"},
      {dictionary({{BQSTR("k"), dictionary({{integer(2).get(), kBQBooleanTrue}}).get()}, {kBQNull, kBQNull}}),
       "{\"k\": {2: true}, null: null}"},
      {array({part.get(), part.get()}), "[[1], [1]]"}, /* beside itself, not inside */
  };
  for (const auto& [value, expected] : kRows) EXPECT_EQ(describe(value.get()), expected);
}

TEST(Description, StopsBelowTheDepthLimitOnASmallStack) {
  std::string atLimit, beyond;
  runOnSmallStack([&] {
    atLimit = describe(nest(512, integer(7).get()).get());
    beyond = describe(nest(513, integer(7).get()).get());
  });
  EXPECT_TRUE(atLimit.find("[7") != std::string::npos && atLimit.find("...") == std::string::npos);
  EXPECT_TRUE(beyond.find("7") == std::string::npos && beyond.find("...") != std::string::npos);
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

}  // namespace
