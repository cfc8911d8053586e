#include "values/Construction.h"

#include <gtest/gtest.h>

#include "support/Values.h"
#include "values/AutoArray.h"

namespace {

using namespace support;

Value formatted(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  Value result = Value::adopt(vx::bqCreateString(format, arguments));
  va_end(arguments);
  return result;
}

TEST(Construction, FormatsAreInTheLegacyWesternEncoding) {
  EXPECT_EQ(text(formatted("%@ is %d", BQSTR("a"), 1).get()), "a is 1");
  EXPECT_EQ(text(formatted("caf\x8e %s", "x").get()), "caf\u00e9 x");
  EXPECT_EQ(text(formatted("%@", nullptr).get()), "(null)");
  EXPECT_EQ(formatted(nullptr).get(), nullptr);
}

TEST(Construction, ArraysEndAtTheFirstNull) {
  Value base = array({integer(1)});
  auto make = [](auto... values) { return notation(Value::adopt(vx::bqTypeCreateArray(values...)).get()); };
  const BQArray* none = nullptr;
  const void* end = nullptr;
  EXPECT_EQ(make(none, end), "[]");
  EXPECT_EQ(make(none, BQSTR("a"), BQSTR("b"), end), "['a', 'b']");
  EXPECT_EQ(make(none, BQSTR("a"), end, BQSTR("b"), end), "['a']");
  EXPECT_EQ(make(static_cast<const BQArray*>(base), BQSTR("a"), end), "[1, 'a']");
  EXPECT_EQ(notation(base.get()), "[1]");
}

TEST(Construction, DictionariesEndAtTheFirstNullAndDropAKeyWithoutValue) {
  Value base = dictionary({{"a", integer(1)}});
  auto make = [](auto... words) { return notation(Value::adopt(vx::bqTypeCreateDictionary(words...)).get()); };
  const BQDictionary* none = nullptr;
  const void* end = nullptr;
  EXPECT_EQ(make(none, end), "{}");
  EXPECT_EQ(make(none, BQSTR("A"), BQSTR("x"), BQSTR("B"), end), "{A: 'x'}");
  EXPECT_EQ(make(none, BQSTR("A"), BQSTR("x"), BQSTR("A"), BQSTR("y"), end), "{A: 'y'}");
  EXPECT_EQ(make(static_cast<const BQDictionary*>(base), BQSTR("b"), BQSTR("x"), end), "{a: 1, b: 'x'}");
  EXPECT_EQ(notation(base.get()), "{a: 1}");
}

TEST(Construction, DictionariesCopyTheirKeys) {
  Value key = Value::adopt(BQStringCreateMutableCopy(BQSTR("k")));
  Value made = Value::adopt(vx::bqTypeCreateDictionary(nullptr, key.get(), BQSTR("v"), nullptr));
  BQStringAppend(key.as<BQString>(), BQSTR("changed"));
  EXPECT_EQ(notation(made.get()), "{k: 'v'}");
}

TEST(Construction, KeysOfAnEmptyDictionaryAreTheSharedArray) {
  for (const BQDictionary* empty : {static_cast<const BQDictionary*>(nullptr), BQDictionaryCreate(nullptr, nullptr, 0)}) {
    Value dictionary = Value::adopt(empty);
    Value keys = Value::adopt(vx::copyDictionaryKeys(dictionary));
    EXPECT_EQ(keys.get(), vx::AutoArray::emptyArray());
  }
  EXPECT_EQ(BQGetRetainCount(vx::AutoArray::emptyArray()), 1);
  Value keys = Value::adopt(vx::copyDictionaryKeys(dictionary({{"b", integer(1)}, {"a", integer(2)}})));
  EXPECT_EQ(notation(keys.get()), "['b', 'a']");
}

TEST(Construction, InternsSmallIntegersOnly) {
  for (int value = -3; value <= 11; ++value) {
    const BQNumber* number = vx::internedInt(value);
    EXPECT_EQ(notation(number), std::to_string(value));
    EXPECT_EQ(BQNumberGetType(number), kBQNumberIntType);
    EXPECT_EQ(number, vx::internedInt(value));
  }
  for (int value : {-4, 12, INT32_MIN, INT32_MAX}) EXPECT_EQ(vx::internedInt(value), nullptr) << value;
}

}  // namespace
