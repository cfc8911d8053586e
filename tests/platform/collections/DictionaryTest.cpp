#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "support/PlatformValues.h"

namespace {

using namespace values;

constexpr BQIndex kHuge = std::numeric_limits<BQIndex>::max();

bq::Ref<BQDictionary> makeMutable(BQDictionaryKeys keys = kBQDictionaryRetainKeys) {
  return own(BQDictionaryCreateMutable(0, keys));
}

bq::Ref<const BQString> name(int number) {
  return string("name" + std::to_string(number));
}

int64_t numberFor(const BQDictionary* dictionary, BQTypeRef key) {
  int64_t number = -1;
  BQNumberGetValue(static_cast<const BQNumber*>(BQDictionaryGetValue(dictionary, key)), kBQNumberSInt64Type,
                   &number);
  return number;
}

TEST(Dictionary, NonsenseIsAnswered) {
  BQTypeRef one[] = {BQSTR("key")}, none[] = {nullptr};
  EXPECT_EQ(BQDictionaryCreate(one, one, -1), nullptr);
  EXPECT_EQ(BQDictionaryCreate(nullptr, one, 1), nullptr);
  EXPECT_EQ(BQDictionaryCreate(one, nullptr, 1), nullptr);
  EXPECT_EQ(describe(own(BQDictionaryCreate(one, none, 1)).get()), "{}");
  EXPECT_EQ(describe(own(BQDictionaryCreate(none, one, 1)).get()), "{}");
  for (BQTypeRef object : {static_cast<BQTypeRef>(nullptr), static_cast<BQTypeRef>(kBQNull)}) {
    auto* dictionary = static_cast<const BQDictionary*>(object);
    BQTypeRef keys[] = {kBQNull};
    EXPECT_EQ(BQDictionaryCreateCopy(dictionary), nullptr);
    EXPECT_EQ(BQDictionaryCreateMutableCopy(0, dictionary), nullptr);
    EXPECT_EQ(BQDictionaryGetCount(dictionary), 0);
    EXPECT_EQ(BQDictionaryGetValue(dictionary, one[0]), nullptr);
    EXPECT_FALSE(BQDictionaryContainsKey(dictionary, one[0]));
    BQDictionaryGetKeysAndValues(dictionary, keys, keys);
    EXPECT_EQ(keys[0], kBQNull);
  }
  auto dictionary = makeMutable();
  BQDictionarySetValue(dictionary.get(), nullptr, one[0]);
  BQDictionarySetValue(dictionary.get(), one[0], nullptr);
  BQDictionaryAddValue(dictionary.get(), nullptr, one[0]);
  BQDictionaryAddValue(dictionary.get(), one[0], nullptr);
  BQDictionaryRemoveValue(dictionary.get(), nullptr);
  EXPECT_EQ(BQDictionaryGetValue(dictionary.get(), nullptr), nullptr);
  EXPECT_EQ(describe(dictionary.get()), "{}");
}

TEST(Dictionary, OnlyMutableDictionariesChange) {
  BQTypeRef one[] = {BQSTR("key")};
  auto immutable = own(BQDictionaryCreate(one, one, 1));
  for (BQTypeRef object : {static_cast<BQTypeRef>(immutable.get()), static_cast<BQTypeRef>(nullptr),
                           static_cast<BQTypeRef>(kBQNull)}) {
    auto* dictionary = static_cast<BQDictionary*>(const_cast<void*>(object));
    BQDictionarySetValue(dictionary, BQSTR("key"), kBQNull);
    BQDictionaryAddValue(dictionary, BQSTR("other"), kBQNull);
    BQDictionaryRemoveValue(dictionary, BQSTR("key"));
    BQDictionaryRemoveAllValues(dictionary);
  }
  EXPECT_EQ(describe(immutable.get()), "{\"key\": \"key\"}");
  EXPECT_EQ(own(BQDictionaryCreateCopy(immutable.get())).get(), immutable.get());
}

TEST(Dictionary, KeepsTheOrderInWhichKeysWereFirstSet) {
  BQTypeRef keys[] = {BQSTR("z"), BQSTR("a"), BQSTR("z"), BQSTR("m")};
  BQTypeRef values[] = {BQSTR("1"), BQSTR("2"), BQSTR("3"), BQSTR("4")};
  auto dictionary = own(BQDictionaryCreate(keys, values, 4));
  auto changed = own(BQDictionaryCreateMutableCopy(0, dictionary.get()));
  BQDictionarySetValue(changed.get(), BQSTR("a"), values[0]);
  BQDictionaryAddValue(changed.get(), BQSTR("m"), values[0]);
  BQDictionaryRemoveValue(changed.get(), BQSTR("z"));
  BQDictionaryAddValue(changed.get(), BQSTR("z"), values[0]);
  EXPECT_EQ(describe(changed.get()), R"({"a": "1", "m": "4", "z": "1"})");
  EXPECT_EQ(describe(dictionary.get()), R"({"z": "3", "a": "2", "m": "4"})");
}

TEST(Dictionary, KeysOfEveryKindAreFoundByContent) {
  auto dictionary = makeMutable();
  const std::pair<Value, Value> kRows[] = {
      {string("text"), mutableString("text")},
      {integer(5), real(5)},
      {own(BQDateCreate(1)), own(BQDateCreate(1))},
      {own(BQDataCreate("d", 1)), own(BQDataCreateView("d", 1))},
      {array({integer(1).get()}), array({real(1).get()})},
      {Value::retain(kBQNull), Value::retain(kBQNull)},
      {Value::retain(kBQBooleanTrue), Value::retain(kBQBooleanTrue)},
  };
  for (int filler : {0, 20}) { /* small and with an index */
    for (int i = 0; i < filler; ++i) BQDictionarySetValue(dictionary.get(), name(i).get(), kBQNull);
    for (const auto& [key, same] : kRows) BQDictionarySetValue(dictionary.get(), key.get(), key.get());
    for (const auto& [key, same] : kRows) {
      EXPECT_EQ(BQDictionaryGetValue(dictionary.get(), same.get()), key.get()) << describe(key.get());
    }
    EXPECT_FALSE(BQDictionaryContainsKey(dictionary.get(), BQSTR("5")));
    EXPECT_FALSE(BQDictionaryContainsKey(dictionary.get(), kBQBooleanFalse));
    EXPECT_EQ(BQDictionaryGetCount(dictionary.get()), static_cast<BQIndex>(std::size(kRows)) + filler);
  }
}

TEST(Dictionary, CopiesStringKeysOnlyWhenAsked) {
  for (BQDictionaryKeys rule : {kBQDictionaryRetainKeys, kBQDictionaryCopyStringKeys}) {
    auto dictionary = makeMutable(rule);
    auto key = mutableString("key");
    BQDictionarySetValue(dictionary.get(), key.get(), kBQNull);
    BQTypeRef kept = nullptr;
    BQDictionaryGetKeysAndValues(dictionary.get(), &kept, nullptr);
    EXPECT_EQ(kept == key.get(), rule == kBQDictionaryRetainKeys);
    auto copy = own(BQDictionaryCreateMutableCopy(0, dictionary.get()));
    BQDictionaryRemoveAllValues(copy.get());
    BQDictionaryAddValue(copy.get(), key.get(), kBQNull);
    BQStringAppend(key.get(), BQSTR("!"));
    EXPECT_EQ(BQDictionaryContainsKey(copy.get(), BQSTR("key")), rule == kBQDictionaryCopyStringKeys);
  }
}

TEST(Dictionary, ReferencesAreDropped) {
  auto key = string("key"), value = string("value");
  auto dictionary = makeMutable();
  BQDictionarySetValue(dictionary.get(), key.get(), value.get());
  BQDictionarySetValue(dictionary.get(), string("key").get(), value.get());
  BQDictionaryAddValue(dictionary.get(), key.get(), value.get());
  EXPECT_EQ(BQGetRetainCount(key.get()), 2);
  EXPECT_EQ(BQGetRetainCount(value.get()), 2);
  auto copy = own(BQDictionaryCreateCopy(dictionary.get()));
  BQDictionaryRemoveValue(dictionary.get(), key.get());
  EXPECT_EQ(BQGetRetainCount(key.get()), 2);
  copy = nullptr;
  EXPECT_EQ(BQGetRetainCount(key.get()) + BQGetRetainCount(value.get()), 2);
}

/* Against a model, with so many removals that the index is rebuilt again and again. */
TEST(Dictionary, BehavesLikeAModelUnderRandomChanges) {
  std::mt19937 random(20240229);
  auto dictionary = makeMutable();
  std::map<int, int64_t> model;
  std::vector<bq::Ref<const BQString>> names;
  for (int i = 0; i < 300; ++i) names.push_back(name(i));
  for (int step = 0; step < 30000; ++step) {
    int chosen = static_cast<int>(random() % (step % 2000 < 1000 ? 300 : 12));
    const BQString* key = names[static_cast<size_t>(chosen)].get();
    switch (random() % 4) {
      case 0:
        BQDictionarySetValue(dictionary.get(), key, integer(step).get());
        model[chosen] = step;
        break;
      case 1:
        BQDictionaryAddValue(dictionary.get(), key, integer(step).get());
        model.try_emplace(chosen, step);
        break;
      default:
        BQDictionaryRemoveValue(dictionary.get(), key);
        model.erase(chosen);
    }
    if (step % 5000 == 4999) {
      BQDictionaryRemoveAllValues(dictionary.get());
      model.clear();
    }
    ASSERT_EQ(BQDictionaryGetCount(dictionary.get()), static_cast<BQIndex>(model.size()));
    auto expected = model.find(chosen);
    ASSERT_EQ(numberFor(dictionary.get(), key), expected == model.end() ? -1 : expected->second);
  }
  std::vector<BQTypeRef> keys(model.size());
  BQDictionaryGetKeysAndValues(dictionary.get(), keys.data(), nullptr);
  for (BQTypeRef key : keys)
    EXPECT_EQ(model.count(std::stoi(text(static_cast<const BQString*>(key)).substr(4))), 1u);
}

/* Texts that collide under the usual unseeded hashes: "Aa" and "BB" under the factor 31. */
TEST(Dictionary, NamesChosenToCollideStayFast) {
  constexpr int kBlocks = 18, kNames = 200000;
  auto dictionary = own(BQDictionaryCreateMutable(kHuge, kBQDictionaryRetainKeys)); /* a hint, no order */
  std::vector<bq::Ref<const BQString>> names;
  for (int i = 0; i < kNames; ++i) {
    std::string text;
    for (int block = 0; block < kBlocks; ++block) text += (i >> block & 1) != 0 ? "Aa" : "BB";
    names.push_back(string(text));
    BQDictionarySetValue(dictionary.get(), names.back().get(), kBQNull);
  }
  EXPECT_EQ(BQDictionaryGetCount(dictionary.get()), kNames);
  for (const auto& name : names) ASSERT_TRUE(BQDictionaryContainsKey(dictionary.get(), name.get()));
}

}  // namespace
