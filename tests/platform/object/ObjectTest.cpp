#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <deque>
#include <string>
#include <thread>
#include <vector>

#include "platform/object/Object.h"
#include "support/PlatformValues.h"

namespace {

using namespace values;

/* An instance that counts its destruction and holds another object. */
struct Probe {
  BQRuntimeBase base;
  int* destroyed;
  BQTypeRef held;
};

void finalizeProbe(BQTypeRef object) {
  BQRelease(BQRetain(object)); /* must not finalise it again */
  const Probe* probe = static_cast<const Probe*>(object);
  if (probe->destroyed != nullptr) ++*probe->destroyed;
  BQRelease(probe->held);
}

const BQString* describeProbe(BQTypeRef object) {
  return BQStringCreateWithFormat(BQSTR("probe %@"), static_cast<const Probe*>(object)->held);
}

const BQString* formatProbe(BQTypeRef) {
  return BQStringCreateCopy(BQSTR("formatted"));
}

BQTypeID registerProbe(const char* name, const BQString* (*formatting)(BQTypeRef),
                       const BQString* (*debug)(BQTypeRef)) {
  static std::deque<BQRuntimeClass> records; /* classes stay for the life of the process */
  records.push_back({0, name, nullptr, nullptr, finalizeProbe, nullptr, nullptr, formatting, debug});
  return _BQRuntimeRegisterClass(&records.back());
}

BQTypeID plainProbe() {
  static const BQTypeID typeID = registerProbe("Plain", nullptr, nullptr);
  return typeID;
}

Probe* makeProbe(BQTypeID typeID, int* destroyed, BQTypeRef held = nullptr) {
  BQTypeRef object = _BQRuntimeCreateInstance(typeID, sizeof(Probe) - sizeof(BQRuntimeBase));
  auto* probe = static_cast<Probe*>(const_cast<void*>(object));
  probe->destroyed = destroyed;
  probe->held = held;
  return probe;
}

TEST(Object, NullHasAnAnswerEverywhere) {
  EXPECT_EQ(BQRetain(nullptr), nullptr);
  BQRelease(nullptr);
  EXPECT_EQ(BQGetRetainCount(nullptr), 0);
  EXPECT_EQ(BQGetTypeID(nullptr), 0u);
  EXPECT_EQ(BQHash(nullptr), 0u);
  EXPECT_TRUE(BQEqual(nullptr, nullptr));
  EXPECT_FALSE(BQEqual(nullptr, kBQNull));
  EXPECT_FALSE(BQEqual(kBQNull, nullptr));
  EXPECT_EQ(describe(nullptr), "(null)");
  for (BQTypeID unknown : {0u, 1023u, 1024u, 65536u, 0xFFFFFFFFu}) {
    EXPECT_EQ(BQCopyTypeIDDescription(unknown), nullptr) << unknown;
    EXPECT_EQ(_BQRuntimeCreateInstance(unknown, 0), nullptr) << unknown;
  }
}

TEST(Object, ImmortalObjectsAreNotCounted) {
  BQ_DEFINE_STATIC_STRING(constant, "constant");
  for (BQTypeRef object : {static_cast<BQTypeRef>(constant), static_cast<BQTypeRef>(kBQNull),
                           static_cast<BQTypeRef>(kBQBooleanTrue), static_cast<BQTypeRef>(BQSTR("text"))}) {
    BQRelease(object);
    BQRelease(object);
    EXPECT_EQ(BQRetain(object), object);
    EXPECT_EQ(BQGetRetainCount(object), 1);
  }
  EXPECT_EQ(text(constant), "constant");
}

TEST(Object, InstancesAreZeroedAndCompareByIdentity) {
  auto first = Value::adopt(_BQRuntimeCreateInstance(plainProbe(), 1000));
  auto second = Value::adopt(_BQRuntimeCreateInstance(plainProbe(), 1000));
  const auto* bytes = static_cast<const char*>(first.get()) + sizeof(BQRuntimeBase);
  EXPECT_EQ(std::string(bytes, 1000), std::string(1000, '\0'));
  EXPECT_TRUE(BQEqual(first.get(), first.get()));
  EXPECT_FALSE(BQEqual(first.get(), second.get()));
  EXPECT_EQ(BQHash(first.get()), BQHash(first.get()));
}

TEST(Object, InstancesAreRefusedOfThePlatformsOwnClassesAndOfNegativeSize) {
  for (BQTypeID typeID : {BQStringGetTypeID(), BQArrayGetTypeID(), BQDictionaryGetTypeID()}) {
    EXPECT_EQ(_BQRuntimeCreateInstance(typeID, 0), nullptr);
  }
  EXPECT_EQ(_BQRuntimeCreateInstance(plainProbe(), -1), nullptr);
}

/* In a process of its own: nothing can be registered afterwards. */
TEST(ObjectDeathTest, RegistrationEndsWithZeroWhenAllIdentifiersAreTaken) {
  auto registerMany = [] {
    static const BQRuntimeClass kClass = {0,       "Many",  nullptr, nullptr, nullptr,
                                          nullptr, nullptr, nullptr, nullptr};
    int registered = 0;
    for (int i = 0; i < 2000; ++i) registered += _BQRuntimeRegisterClass(&kClass) != 0;
    BQTypeRef old = _BQRuntimeCreateInstance(plainProbe(), 0);
    bool works = registered > 500 && registered < 2000 && _BQRuntimeRegisterClass(nullptr) == 0;
    std::exit(works && old == nullptr ? 0 : 1);
  };
  EXPECT_EXIT(registerMany(), testing::ExitedWithCode(0), "");
}

TEST(Object, ThreadsShareReferences) {
  int destroyed = 0;
  Probe* probe = makeProbe(plainProbe(), &destroyed);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    BQRetain(probe);
    threads.emplace_back([probe] {
      for (int round = 0; round < 20000; ++round) {
        BQRetain(probe);
        BQRetain(BQSTR("constant"));
        BQRelease(probe);
      }
      BQRelease(probe);
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(BQGetRetainCount(probe), 1);
  EXPECT_EQ(destroyed, 0);
  BQRelease(probe);
  EXPECT_EQ(destroyed, 1);
}

TEST(Object, NestingOfAnyDepthIsFreedOnASmallStack) {
  int destroyed = 0;
  Value chain = Value::adopt(makeProbe(plainProbe(), &destroyed));
  for (int i = 0; i < 333333; ++i) {
    chain = array({chain.get()});
    BQDictionary* holder = BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys);
    BQDictionarySetValue(holder, BQSTR("inner"), chain.get());
    chain = Value::adopt(holder);
    chain = Value::adopt(makeProbe(plainProbe(), &destroyed, chain.release()));
  }
  runOnSmallStack([&chain] { chain = Value(); });
  EXPECT_EQ(destroyed, 333334);
}

TEST(Object, DescriptionsOfInstancesComeFromTheirClass) {
  const BQTypeID both = registerProbe("Both", formatProbe, describeProbe);
  const BQTypeID debugOnly = registerProbe("DebugOnly", nullptr, describeProbe);
  const struct {
    BQTypeID typeID;
    const char *described, *formatted;
  } kRows[] = {{both, "probe 5", "formatted"},
               {debugOnly, "probe 5", "probe 5"},
               {plainProbe(), "<Plain 0x", "<Plain 0x"}};
  for (const auto& row : kRows) {
    auto probe = Value::adopt(makeProbe(row.typeID, nullptr, integer(5).release()));
    auto formatted = own(BQStringCreateWithFormat(BQSTR("%@"), probe.get()));
    EXPECT_TRUE(describe(probe.get()).starts_with(row.described)) << describe(probe.get());
    EXPECT_TRUE(text(formatted).starts_with(row.formatted)) << text(formatted);
  }
}

}  // namespace
