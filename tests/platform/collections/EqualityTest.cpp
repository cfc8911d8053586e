#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <string>

#include "support/PlatformValues.h"

namespace {

using namespace values;

bq::Ref<BQDictionary> dictionary(std::initializer_list<std::pair<BQTypeRef, BQTypeRef>> pairs) {
  auto result = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
  for (const auto& [key, value] : pairs) BQDictionarySetValue(result.get(), key, value);
  return result;
}

/* Arrays in dictionaries in arrays, `depth` levels around a leaf. */
Value nest(int depth, BQTypeRef leaf) {
  Value nested = Value::retain(leaf);
  for (int i = 0; i < depth; ++i) {
    nested = i % 2 == 0 ? Value(array({nested.get()})) : Value(dictionary({{BQSTR("k"), nested.get()}}));
  }
  return nested;
}

TEST(Equality, ContainersCompareByContent) {
  auto one = integer(1), alsoOne = bq::Ref<const BQNumber>(integer(1)), two = integer(2);
  const struct {
    Value left, right;
    bool equal;
  } kRows[] = {
      {array({}), array({}), true},
      {array({one.get(), nullptr}), array({real(1).get(), nullptr}), true},
      {array({one.get()}), array({two.get()}), false},
      {array({one.get()}), array({one.get(), one.get()}), false},
      {array({nullptr}), array({kBQNull}), false},
      {array({}), dictionary({}), false},
      {dictionary({{BQSTR("a"), one.get()}, {BQSTR("b"), two.get()}}),
       dictionary({{BQSTR("b"), two.get()}, {BQSTR("a"), alsoOne.get()}}), true},
      {dictionary({{BQSTR("a"), one.get()}}), dictionary({{BQSTR("a"), two.get()}}), false},
      {dictionary({{BQSTR("a"), one.get()}}), dictionary({{BQSTR("b"), one.get()}}), false},
      {nest(5, one.get()), nest(5, alsoOne.get()), true},
      {nest(5, one.get()), nest(5, two.get()), false},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(describe(row.left.get()) + " " + describe(row.right.get()));
    EXPECT_EQ(BQEqual(row.left.get(), row.right.get()), row.equal);
    EXPECT_EQ(BQEqual(row.right.get(), row.left.get()), row.equal);
    EXPECT_TRUE(!row.equal || BQHash(row.left.get()) == BQHash(row.right.get()));
  }
}

TEST(Equality, GoesByIdentityBelowTheDepthLimitOnASmallStack) {
  auto leaf = integer(1), otherLeaf = bq::Ref<const BQNumber>(integer(1));
  Value atLimit = nest(512, leaf.get()), alsoAtLimit = nest(512, otherLeaf.get());
  Value beyond = nest(600, leaf.get()), alsoBeyond = nest(600, leaf.get());
  runOnSmallStack([&] {
    EXPECT_TRUE(BQEqual(atLimit.get(), alsoAtLimit.get()));
    EXPECT_EQ(BQHash(atLimit.get()), BQHash(alsoAtLimit.get()));
    EXPECT_FALSE(BQEqual(beyond.get(), alsoBeyond.get()));
    EXPECT_EQ(BQHash(beyond.get()), BQHash(alsoBeyond.get()));
  });
  auto shared = nest(300, leaf.get());
  EXPECT_TRUE(BQEqual(nest(511, shared.get()).get(), nest(511, shared.get()).get()));
}

TEST(Equality, ContainersThatHoldThemselvesTwiceEnd) {
  auto first = array({nullptr, nullptr}), second = array({nullptr, nullptr});
  for (const auto& array : {first, second}) {
    BQArraySetValueAtIndex(array.get(), 0, array.get());
    BQArraySetValueAtIndex(array.get(), 1, array.get());
  }
  EXPECT_TRUE(BQEqual(first.get(), first.get()));
  EXPECT_FALSE(BQEqual(first.get(), second.get()));
  EXPECT_EQ(BQHash(first.get()), BQHash(second.get()));
  BQArrayRemoveAllValues(first.get());
  BQArrayRemoveAllValues(second.get());
}

/* Each level holds the one below twice: 2^60 paths lead to the leaf. */
TEST(Equality, SharedPartsAreComparedOnceInEachComparison) {
  auto build = [](const BQArray* leaf) {
    Value level = Value::retain(leaf);
    for (int i = 0; i < 60; ++i) {
      level = i % 2 == 0 ? Value(array({level.get(), level.get()}))
                         : Value(dictionary({{BQSTR("l"), level.get()}, {BQSTR("r"), level.get()}}));
    }
    return level;
  };
  auto leaf = array({integer(1).get()}), otherLeaf = array({integer(1).get()});
  Value top = build(leaf.get()), otherTop = build(otherLeaf.get());
  EXPECT_TRUE(BQEqual(top.get(), otherTop.get()));
  for (int64_t number : {2, 1}) {
    BQArraySetValueAtIndex(otherLeaf.get(), 0, integer(number).get());
    EXPECT_EQ(BQEqual(top.get(), otherTop.get()), number == 1)
        << "nothing is remembered from one to the next";
  }
}

/* Keys that hold the dictionary: each level tries each key of the other one. */
TEST(Equality, DictionariesInTheirOwnKeysEnd) {
  auto build = [] {
    auto holder = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
    for (int64_t i = 0; i < 3; ++i) {
      auto key = array({nullptr, integer(i).get()});
      BQDictionarySetValue(holder.get(), key.get(), key.get());
      BQArraySetValueAtIndex(key.get(), 0, holder.get());
    }
    return holder;
  };
  auto first = build(), second = build();
  EXPECT_FALSE(BQEqual(first.get(), second.get()));
  BQDictionaryRemoveAllValues(first.get());
  BQDictionaryRemoveAllValues(second.get());
}

}  // namespace
