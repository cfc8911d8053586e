#include "values/Construction.h"

#include <gtest/gtest.h>

#include "support/Values.h"
#include "values/AutoArray.h"
#include "values/AutoString.h"

namespace {

using namespace support;

const void* const kEnd = nullptr;

template <class... Values>
std::string made(const BQArray* base, Values... values) {
  return notation(Value::adopt(vx::bqTypeCreateArray(base, values..., kEnd)).get());
}

template <class... Words>
std::string made(const BQDictionary* base, Words... words) {
  return notation(Value::adopt(vx::bqTypeCreateDictionary(base, words..., kEnd)).get());
}

TEST(Construction, FormatsAreInTheLegacyWesternEncoding) {
  EXPECT_EQ(text(vx::AutoString("caf\x8e %@ %d", nullptr, 1).get()), "caf\u00e9 (null) 1");
}

TEST(Construction, ListsEndAtTheFirstNull) {
  const BQArray* noArray = nullptr;
  const BQDictionary* none = nullptr;
  Value values = array({integer(1)}), pairs = dictionary({{"a", integer(1)}});
  EXPECT_EQ(made(noArray), "[]");
  EXPECT_EQ(made(noArray, BQSTR("a"), kEnd, BQSTR("b")), "['a']");
  EXPECT_EQ(made(static_cast<const BQArray*>(values), BQSTR("a")), "[1, 'a']");
  EXPECT_EQ(made(none, BQSTR("A"), BQSTR("x"), BQSTR("B")), "{A: 'x'}") << "a key without a value is dropped";
  EXPECT_EQ(made(none, BQSTR("A"), BQSTR("x"), BQSTR("A"), BQSTR("y")), "{A: 'y'}");
  EXPECT_EQ(made(static_cast<const BQDictionary*>(pairs), BQSTR("b"), BQSTR("x")), "{a: 1, b: 'x'}");
  EXPECT_EQ(notation(values.get()) + notation(pairs.get()), "[1]{a: 1}") << "the bases stay as they are";
}

TEST(Construction, KeysOfAnEmptyDictionaryAreTheSharedArray) {
  EXPECT_EQ(Value::adopt(vx::copyDictionaryKeys(nullptr)).get(), vx::AutoArray::emptyArray());
  EXPECT_EQ(Value::adopt(vx::copyDictionaryKeys(dictionary({}))).get(), vx::AutoArray::emptyArray());
  EXPECT_EQ(BQGetRetainCount(vx::AutoArray::emptyArray()), 1);
  Value keys = Value::adopt(vx::copyDictionaryKeys(dictionary({{"b", integer(1)}, {"a", integer(2)}})));
  EXPECT_EQ(notation(keys.get()), "['b', 'a']");
}

TEST(Construction, InternsSmallIntegersOnly) {
  for (int value = -3; value <= 11; ++value) {
    EXPECT_EQ(notation(vx::internedInt(value)), std::to_string(value));
    EXPECT_EQ(vx::internedInt(value), vx::internedInt(value));
  }
  for (int value : {-4, 12, INT32_MIN, INT32_MAX}) EXPECT_EQ(vx::internedInt(value), nullptr) << value;
}

}  // namespace
