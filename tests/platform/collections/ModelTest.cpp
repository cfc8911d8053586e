/* Changes values at random beside containers of the standard library, and compares them after each step. */
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "support/PlatformValues.h"

namespace {

using namespace values;
using namespace std::string_literals;

constexpr BQIndex kHuge = std::numeric_limits<BQIndex>::max();

std::mt19937 engine(20240229);

BQIndex upTo(BQIndex high) {
  return std::uniform_int_distribution<BQIndex>(0, high)(engine);
}

/* A position in something of a size, its end, or one that is out of bounds. */
BQIndex position(BQIndex size) {
  const BQIndex outside[] = {-1, size + 1, kHuge, -kHuge};
  return upTo(9) == 0 ? outside[upTo(3)] : upTo(size);
}

std::string piece() {
  const std::string pieces[] = {"a", "B", "A", "b", " \v\f", "\t\r\n", "\0"s, "é", "€", "😀", "\u00A0", ""};
  return pieces[upTo(11)];
}

std::string foldedIf(int isFolded, std::string text) {
  for (char& letter : text) letter += isFolded != 0 && letter >= 'A' && letter <= 'Z' ? 32 : 0;
  return text;
}

bool isBoundary(const std::string& text, BQIndex position) {
  return position >= 0 && position <= std::ssize(text) && (text[position] & 0xC0) != 0x80;
}

bool isInside(const std::string& text, BQRange range) {
  return range.length >= 0 && range.length <= std::ssize(text) && isBoundary(text, range.location) &&
         isBoundary(text, range.location + range.length);
}

void change(BQString* string, std::string& model) {
  const std::string text = piece() + piece();
  const BQIndex length = position(std::ssize(model));
  BQStringTruncate(string, length);
  if (isBoundary(model, length)) model.resize(length);
  BQStringAppend(string, values::string(text).get());
  model += text;
  for (const auto& [bytes, replaced] : {std::pair{"\xFFz"s, "\uFFFDz"s},
                                        {"\xED\xA0\x80", "\uFFFD\uFFFD\uFFFD"},
                                        {text + "\xE2\x82", text + "\uFFFD\uFFFD"}}) {
    BQStringAppendUTF8(string, bytes.data(), std::ssize(bytes));
    model += replaced;
  }
  if (model.size() < 30) {
    BQStringAppend(string, string);
    BQStringAppendUTF8(string, BQStringGetUTF8Ptr(string), std::ssize(model));
    BQStringAppendFormat(string, BQSTR("%@-%d"), string, 42);
    BQStringAppendFormat(string, string);
    model += model + model + model + model + model + "-42";
    model += model;
  }
  std::memcpy(BQStringReserveUTF8(string, std::ssize(text)), text.data(), text.size());
  BQStringCommitUTF8(string, kHuge);
  BQStringCommitUTF8(string, std::ssize(text));
  model += text;
  if (upTo(2) != 0) return;
  BQStringTrimWhitespace(string);
  model.erase(0, model.find_first_not_of(" \t\r\n\v\f"));
  model.erase(model.find_last_not_of(" \t\r\n\v\f") + 1);
}

void replace(BQString* string, std::string& model) {
  const BQRange range = {position(3), position(std::ssize(model))};
  const auto options = BQStringCompareOptions(upTo(1));
  const std::string part = piece(), other = piece();
  BQIndex count =
      BQStringFindAndReplace(string, values::string(part).get(), values::string(other).get(), range, options);
  if (!part.empty() && isInside(model, range)) {
    std::string rest = model.substr(range.location, range.length), done;
    for (size_t at; (at = foldedIf(options, rest).find(foldedIf(options, part))) != std::string::npos;
         --count) {
      done += rest.substr(0, at) + other;
      rest.erase(0, at + part.size());
    }
    model.replace(range.location, range.length, done + rest);
  }
  EXPECT_EQ(count, 0);
}

void read(const BQString* string, const std::string& model) {
  const BQRange range = {position(std::ssize(model)), position(std::ssize(model))};
  const std::string inside = isInside(model, range) ? model.substr(range.location, range.length) : "";
  const std::string part = std::vector{piece() + piece(), inside, model, foldedIf(1, model)}[upTo(3)];
  const auto object = values::string(part);
  EXPECT_EQ(text(own(BQStringCreateSubstring(string, range))), isInside(model, range) ? inside : "(none)");
  for (int options : {0, 1, 4, 5}) {
    std::string searched = foldedIf(options & 1, inside), wanted = foldedIf(options & 1, part);
    size_t place = options < 4 ? searched.find(wanted) : searched.rfind(wanted);
    BQRange found = {-1, 0};
    bool isFound = place != std::string::npos && !part.empty();
    EXPECT_EQ(BQStringFind(string, object.get(), range, BQStringCompareOptions(options), &found), isFound);
    EXPECT_EQ(found.location, isFound ? range.location + static_cast<BQIndex>(place) : -1);
    EXPECT_EQ(found.length, isFound ? std::ssize(part) : 0);
    int order = foldedIf(options & 1, model).compare(foldedIf(options & 1, part));
    EXPECT_EQ(BQStringCompare(string, object.get(), BQStringCompareOptions(options)),
              order < 0 ? -1 : order > 0);
  }
  EXPECT_EQ(BQStringEqualsIgnoringCase(string, object.get()), foldedIf(1, model) == foldedIf(1, part));
  EXPECT_EQ(BQStringHasPrefix(string, object.get()), model.starts_with(part));
  EXPECT_EQ(BQStringHasSuffix(string, object.get()), model.ends_with(part));
}

TEST(Model, StringsBehaveLikeStandardStrings) {
  bq::Ref<BQString> string;
  std::string model;
  for (int step = 0; step < 3000; ++step) {
    SCOPED_TRACE(step);
    if (step % 20 == 0) string = own(BQStringCreateMutable(position(1000)));
    if (step % 20 == 0) model.clear();
    auto copy = own(BQStringCreateCopy(string.get()));
    const std::string copied = model;
    change(string.get(), model);
    replace(string.get(), model);
    ASSERT_EQ(text(string), model);
    ASSERT_EQ(BQStringGetUTF8Ptr(string.get())[model.size()], '\0');
    ASSERT_EQ(text(copy), copied);
    read(string.get(), model);
  }
}

TEST(Model, DataBehavesLikeAStandardString) {
  bq::Ref<BQData> data;
  for (int step = 0; step < 3000; ++step) {
    SCOPED_TRACE(step);
    if (step % 50 == 0) data = own(BQDataCreateMutable(position(1000)));
    const std::string added(upTo(40), static_cast<char>(step)), old = bytes(data.get());
    auto copy = own(BQDataCreateCopy(data.get()));
    BQDataAppendBytes(data.get(), added.data(), std::ssize(added));
    BQDataAppendBytes(data.get(), BQDataGetBytePtr(data.get()), std::ssize(old + added));
    BQDataAppendBytes(data.get(), added.data(), -1);
    ASSERT_EQ(bytes(data.get()), old + added + old + added);
    std::string model = old + added + old + added;
    model.resize(upTo(100));
    BQDataSetLength(data.get(), std::ssize(model));
    BQDataAppendBytes(data.get(), "?", 1);
    BQDataGetMutableBytePtr(data.get())[model.size()] = '!';
    ASSERT_EQ(bytes(data.get()), model + "!");
    ASSERT_EQ(bytes(own(BQDataCreateMutableCopy(copy.get())).get()), old);
  }
}

std::string joined(const std::vector<std::string>& parts) {
  std::string result;
  for (const std::string& part : parts) result += (result.empty() ? "" : ", ") + part;
  return result;
}

/* The model holds the descriptions of the values. */
TEST(Model, ArraysBehaveLikeVectors) {
  const Value values[] = {integer(1), integer(2), Value()};
  bq::Ref<BQArray> array;
  std::vector<std::string> model;
  for (int step = 0; step < 3000; ++step) {
    SCOPED_TRACE(step);
    if (step % 100 == 0) array = own(BQArrayCreateMutable(position(1000)));
    if (step % 50 == 0) BQArrayRemoveAllValues(array.get());
    if (step % 50 == 0) model.clear();
    auto copy = own(BQArrayCreateCopy(array.get()));
    const std::string copied = describe(copy.get());
    const BQTypeRef value = values[upTo(2)].get();
    BQArrayAppendOwnedValue(array.get(), BQRetain(value));
    BQArrayAppendValue(array.get(), value);
    model.insert(model.end(), 2, describe(value));
    BQIndex index = position(std::ssize(model));
    BQArrayInsertValueAtIndex(array.get(), index, value);
    if (index >= 0 && index <= std::ssize(model)) model.insert(model.begin() + index, describe(value));
    for (bool isRemoved : {false, true, true}) {
      index = position(std::ssize(model));
      const bool isInside = index >= 0 && index < std::ssize(model);
      ASSERT_EQ(describe(BQArrayGetValueAtIndex(array.get(), index)), isInside ? model[index] : "(null)");
      isRemoved ? BQArrayRemoveValueAtIndex(array.get(), index)
                : BQArraySetValueAtIndex(array.get(), index, value);
      if (isInside && isRemoved) model.erase(model.begin() + index);
      if (isInside && !isRemoved) model[index] = describe(value);
    }
    ASSERT_EQ(describe(array.get()), "[" + joined(model) + "]");
    ASSERT_EQ(describe(copy.get()), copied);
    ASSERT_EQ(BQArrayContainsValue(array.get(), value), std::ranges::count(model, describe(value)) > 0);
    ASSERT_TRUE(BQEqual(array.get(), own(BQArrayCreateMutableCopy(position(50), array.get())).get()));
  }
  array = nullptr;
  for (const Value& value : values) EXPECT_LE(BQGetRetainCount(value.get()), 1);
}

/* With so many removals that the index of a large dictionary is rebuilt again and again. */
TEST(Model, DictionariesBehaveLikeVectorsOfPairs) {
  using Pair = std::pair<std::string, std::string>;
  const Value values[] = {integer(1), real(0.5)};
  /* Integers and then equal doubles: the same keys in other objects. */
  std::vector<Value> keys;
  for (int number = 0; number <= 300; ++number) keys.push_back(integer(number));
  for (double number = 0; number <= 300; ++number) keys.push_back(real(number));
  bq::Ref<BQDictionary> dictionary;
  std::vector<Pair> model;
  for (int step = 0; step < 20000; ++step) {
    SCOPED_TRACE(step);
    if (step % 8000 == 0)
      dictionary = own(BQDictionaryCreateMutable(position(1000), kBQDictionaryRetainKeys));
    if (step % 4000 == 0) BQDictionaryRemoveAllValues(dictionary.get());
    if (step % 4000 == 0) model.clear();
    const BQIndex number = upTo(step % 2000 < 1000 ? 300 : 12), change = upTo(3);
    const Value& key = keys[number + 301 * upTo(1)];
    const BQTypeRef value = values[upTo(1)].get();
    auto find = [&] { return std::ranges::find(model, describe(key.get()), &Pair::first); };
    const bool isKnown = find() != model.end();
    if (change == 0) BQDictionarySetValue(dictionary.get(), key.get(), value);
    if (change == 1) BQDictionaryAddValue(dictionary.get(), key.get(), value);
    if (change >= 2) BQDictionaryRemoveValue(dictionary.get(), key.get());
    if (change <= 1 && !isKnown) model.emplace_back(describe(key.get()), "");
    if (change == 0 || (change == 1 && !isKnown)) find()->second = describe(value);
    if (change >= 2 && isKnown) model.erase(find());
    const BQTypeRef found = BQDictionaryGetValue(dictionary.get(), key.get());
    ASSERT_EQ(describe(found), find() == model.end() ? "(null)" : find()->second);
    ASSERT_EQ(BQDictionaryContainsKey(dictionary.get(), key.get()), found != nullptr);
    ASSERT_EQ(BQDictionaryGetCount(dictionary.get()), std::ssize(model));
    if (step % 200 != 0) continue;
    std::vector<std::string> pairs;
    for (const auto& [key, value] : model) pairs.push_back(key + ": " + value);
    ASSERT_EQ(describe(dictionary.get()), "{" + joined(pairs) + "}");
    ASSERT_TRUE(
        BQEqual(dictionary.get(), own(BQDictionaryCreateMutableCopy(position(50), dictionary.get())).get()));
  }
  dictionary = nullptr;
  for (const Value& value : values) EXPECT_EQ(BQGetRetainCount(value.get()), 1);
  for (const Value& key : keys) EXPECT_EQ(BQGetRetainCount(key.get()), 1);
}

TEST(Data, CopiesOutliveWhatTheyWereMadeFrom) {
  char memory[] = "bytes";
  auto view = own(BQDataCreateView(memory, 5)), copy = own(BQDataCreateCopy(view.get()));
  auto owned = own(BQDataCreateWithOwnedBytes(strdup("bytes"), 5));
  EXPECT_EQ(own(BQDataCreateCopy(owned.get())).get(), owned.get());
  EXPECT_TRUE(BQEqual(view.get(), owned.get()));
  memory[0] = '#';
  EXPECT_TRUE(BQEqual(copy.get(), owned.get()) && bytes(view.get()) == "#ytes");
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

/* In pairs: those of a pair are equal, those of different pairs are not. */
TEST(Equality, GoesByClassAndContent) {
  const Value none, one = integer(1), alsoOne = real(1), two = integer(2), null = Value::retain(kBQNull),
                    yes = Value::retain(kBQBooleanTrue), nul = string({"1\0", 2}),
                    data = own(BQDataCreate("2", 1)), later = own(BQDateCreate(1)),
                    deep = nest(512, two.get()), list = array({one.get()}),
                    longer = array({one.get(), kBQNull}),
                    other = dictionary({{one.get(), one.get()}, {kBQNull, two.get()}});
  const auto listOf = [](const auto&... each) { return std::vector<Value>{each...}; };
  const auto values =
      listOf(none, none, null, null, yes, yes, one, alsoOne, two, two, nul, nul, data, data, later, later,
             deep, deep, list, list, longer, longer, other, other, string("1"), mutableString("1"),
             own(BQDataCreate("1", 1)), own(BQDataCreateView("1", 1)), own(BQDateCreate(0.0)),
             own(BQDateCreate(-0.0)), array({}), own(BQArrayCreate(nullptr, 0)), dictionary({}),
             own(BQDictionaryCreate(nullptr, nullptr, 0)), array({one.get(), nullptr}),
             array({alsoOne.get(), nullptr}), dictionary({{one.get(), one.get()}, {yes.get(), two.get()}}),
             dictionary({{yes.get(), two.get()}, {alsoOne.get(), alsoOne.get()}}), nest(512, one.get()),
             nest(512, alsoOne.get()));
  for (size_t left = 0; left < values.size(); ++left) {
    for (size_t right = 0; right < values.size(); ++right) {
      SCOPED_TRACE(testing::Message() << left << " " << right);
      const BQTypeRef first = values[left].get(), second = values[right].get();
      EXPECT_EQ(BQEqual(first, second), left / 2 == right / 2);
      EXPECT_TRUE(left / 2 != right / 2 || BQHash(first) == BQHash(second));
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
