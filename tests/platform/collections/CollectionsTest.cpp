#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "support/PlatformValues.h"

namespace {

using namespace values;

TEST(Data, CopiesOutliveWhatTheyWereMadeFrom) {
  char memory[] = "bytes";
  auto view = own(BQDataCreateView(memory, 5));
  auto copy = own(BQDataCreateCopy(view.get()));
  auto owned = own(BQDataCreateWithOwnedBytes(strdup("bytes"), 5));
  EXPECT_EQ(static_cast<const void*>(BQDataGetBytePtr(view.get())), memory);
  EXPECT_EQ(own(BQDataCreateCopy(owned.get())).get(), owned.get());
  EXPECT_TRUE(BQEqual(view.get(), owned.get()));
  std::memset(memory, '#', 5);
  EXPECT_TRUE(BQEqual(copy.get(), owned.get()) && !BQEqual(view.get(), owned.get()));
  EXPECT_NE(BQDataGetBytePtr(own(BQDataCreateView(nullptr, 0)).get()), nullptr);
  EXPECT_EQ(BQDataCreateWithOwnedBytes(nullptr, 1), nullptr);
}

TEST(Array, ValuesMayChangeTheArrayWhileTheyLeaveIt) {
  static BQArray* changed;
  auto append = [](BQTypeRef) { BQArrayAppendValue(changed, BQSTR("late")); };
  static const BQRuntimeClass kClass = {0,       "Late",  nullptr, nullptr, append,
                                        nullptr, nullptr, nullptr, nullptr};
  const BQTypeID typeID = _BQRuntimeRegisterClass(&kClass);
  auto array = own(changed = BQArrayCreateMutable(0));
  for (int i = 0; i < 4; ++i) BQArrayAppendOwnedValue(changed, _BQRuntimeCreateInstance(typeID, 0));
  BQArraySetValueAtIndex(changed, 0, BQSTR("set"));
  BQArrayRemoveValueAtIndex(changed, 1);
  EXPECT_EQ(BQArrayGetCount(changed), 5);
  BQArrayRemoveAllValues(changed);
  EXPECT_EQ(describe(changed), "[\"late\", \"late\"]");
}

TEST(Dictionary, LeavesOutNullAndKeepsTheFirstOfEqualKeys) {
  BQTypeRef keys[] = {BQSTR("z"), nullptr, BQSTR("z"), BQSTR("m")};
  BQTypeRef values[] = {BQSTR("1"), BQSTR("2"), BQSTR("3"), nullptr};
  EXPECT_EQ(describe(own(BQDictionaryCreate(keys, values, 4)).get()), R"({"z": "3"})");
  EXPECT_EQ(BQDictionaryCreate(keys, nullptr, 1), nullptr);
}

TEST(Dictionary, CopiesStringKeysOnlyWhenAsked) {
  for (BQDictionaryKeys rule : {kBQDictionaryRetainKeys, kBQDictionaryCopyStringKeys}) {
    auto dictionary = own(BQDictionaryCreateMutable(0, rule));
    auto copy = own(BQDictionaryCreateMutableCopy(0, dictionary.get()));
    auto key = mutableString("key");
    BQDictionarySetValue(dictionary.get(), key.get(), kBQNull);
    BQDictionaryAddValue(copy.get(), key.get(), kBQNull);
    BQStringAppend(key.get(), BQSTR("!"));
    const char* expected = rule == kBQDictionaryRetainKeys ? R"({"key!": null})" : R"({"key": null})";
    EXPECT_EQ(describe(dictionary.get()), expected);
    EXPECT_EQ(describe(copy.get()), expected);
  }
}

/* Nobody can choose names that collide. The death test starts the program anew. */
TEST(StringHashDeathTest, DiffersFromProcessToProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string hash = std::to_string(BQHash(BQSTR("text")));
  setenv("HASH_OF_THE_PARENT", hash.c_str(), 0);
  EXPECT_EXIT(std::exit(getenv("HASH_OF_THE_PARENT") == hash ? 1 : 0), testing::ExitedWithCode(0), "");
}

/* The values of a row are equal, those of different rows are not. */
TEST(Equality, GoesByClassAndContent) {
  auto one = integer(1), two = integer(2), alsoOne = real(1);
  const std::vector<Value> kRows[] = {
      {Value()},
      {Value::retain(kBQNull)},
      {Value::retain(kBQBooleanTrue)},
      {one, alsoOne},
      {two},
      {string("1"), mutableString("1"), Value::retain(BQSTR("1")),
       own(BQStringCreateWithBytesNoCopy("1", 1, kBQStringEncodingUTF8))},
      {string({"1\0", 2})},
      {own(BQDataCreate("1", 1)), own(BQDataCreateView("1", 1))},
      {own(BQDataCreate("2", 1))},
      {own(BQDateCreate(0.0)), own(BQDateCreate(-0.0))},
      {own(BQDateCreate(1))},
      {array({}), own(BQArrayCreate(nullptr, 0))},
      {dictionary({}), own(BQDictionaryCreate(nullptr, nullptr, 0))},
      {array({one.get(), nullptr}), array({alsoOne.get(), nullptr})},
      {array({one.get(), kBQNull})},
      {array({one.get()})},
      {dictionary({{one.get(), one.get()}, {BQSTR("b"), two.get()}}),
       dictionary({{BQSTR("b"), two.get()}, {alsoOne.get(), alsoOne.get()}})},
      {dictionary({{one.get(), one.get()}, {BQSTR("c"), two.get()}})},
      {nest(512, one.get()), nest(512, alsoOne.get())},
      {nest(512, two.get())},
  };
  for (const auto& row : kRows) {
    for (const auto& other : kRows) {
      for (const Value& left : row) {
        for (const Value& right : other) {
          SCOPED_TRACE(testing::Message() << &row - kRows << " " << &other - kRows);
          EXPECT_EQ(BQEqual(left.get(), right.get()), &row == &other);
          EXPECT_TRUE(&row != &other || BQHash(left.get()) == BQHash(right.get()));
        }
      }
    }
  }
}

TEST(Equality, GoesByIdentityBelowTheDepthLimitOnASmallStack) {
  auto shared = array({nullptr});
  runOnSmallStack([&shared] {
    EXPECT_TRUE(BQEqual(nest(512, shared.get()).get(), nest(512, shared.get()).get()));
    EXPECT_FALSE(BQEqual(nest(512, array({nullptr}).get()).get(), nest(512, array({nullptr}).get()).get()));
    EXPECT_EQ(BQHash(nest(600, shared.get()).get()), BQHash(nest(600, nullptr).get()));
  });
}

/* 2^60 paths lead to the leaf. Nothing is remembered from one comparison to the next. */
TEST(Equality, SharedPartsAreComparedOnceInEachComparison) {
  auto leaf = array({integer(1).get()}), other = array({nullptr});
  Value top = nest(60, leaf.get(), 2), otherTop = nest(60, other.get(), 2);
  for (int64_t number : {1, 2, 1}) {
    BQArraySetValueAtIndex(other.get(), 0, integer(number).get());
    EXPECT_EQ(BQEqual(top.get(), otherTop.get()), number == 1);
  }
}

/* Twice as a value, and in three keys: each level tries each key of the other one. */
TEST(Equality, ContainersThatHoldThemselvesEnd) {
  std::vector<bq::Ref<BQDictionary>> holders = {dictionary({}), dictionary({})};
  for (const auto& holder : holders) {
    for (int64_t i = 0; i < 3; ++i) {
      auto key = array({holder.get(), integer(i).get(), holder.get()});
      BQDictionarySetValue(holder.get(), key.get(), key.get());
    }
  }
  EXPECT_TRUE(BQEqual(holders[0].get(), holders[0].get()));
  EXPECT_FALSE(BQEqual(holders[0].get(), holders[1].get()));
  EXPECT_EQ(BQHash(holders[0].get()), BQHash(holders[1].get()));
  for (const auto& holder : holders) BQDictionaryRemoveAllValues(holder.get());
}

}  // namespace
