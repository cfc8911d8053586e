/* Changes values at random beside containers of the standard library, and compares them after each step. */
#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <utility>
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
    model += model + model + model + model + model + "-42";
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
  const std::string part = piece() + piece();
  const auto object = values::string(part);
  const BQRange range = {position(std::ssize(model)), position(std::ssize(model))};
  const std::string inside = isInside(model, range) ? model.substr(range.location, range.length) : "";
  EXPECT_EQ(text(own(BQStringCreateSubstring(string, range))), isInside(model, range) ? inside : "(none)");
  for (int options : {0, 1, 4, 5}) {
    std::string searched = foldedIf(options & 1, inside), wanted = foldedIf(options & 1, part);
    size_t place = options < 4 ? searched.find(wanted) : searched.rfind(wanted);
    BQRange found = {-1, 0};
    BQStringFind(string, object.get(), range, BQStringCompareOptions(options), &found);
    bool isFound = place != std::string::npos && !part.empty();
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
  bq::Ref<BQDictionary> dictionary;
  std::vector<Pair> model;
  for (int step = 0; step < 20000; ++step) {
    SCOPED_TRACE(step);
    if (step % 8000 == 0)
      dictionary = own(BQDictionaryCreateMutable(position(1000), kBQDictionaryRetainKeys));
    if (step % 4000 == 0) BQDictionaryRemoveAllValues(dictionary.get());
    if (step % 4000 == 0) model.clear();
    const BQIndex number = upTo(step % 2000 < 1000 ? 300 : 12), change = upTo(3);
    /* Now an integer, now a double: the same key in another object. */
    const Value key = upTo(1) == 0 ? Value(integer(number)) : Value(real(static_cast<double>(number)));
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
}

}  // namespace
