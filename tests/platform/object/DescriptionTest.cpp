#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "support/PlatformValues.h"

namespace {

using namespace values;
using namespace std::string_literals;

bq::Ref<BQDictionary> dictionary(BQTypeRef key, BQTypeRef value) {
  auto result = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
  BQDictionarySetValue(result.get(), key, value);
  return result;
}

TEST(Description, EveryKindOfValueIsReadable) {
  float single = 0.1f;
  const std::string bytes(70, 'A');
  const std::pair<Value, std::string> kRows[] = {
      {string("as \"it\" is\n"), "as \"it\" is\n"},
      {Value::retain(kBQNull), "null"},
      {Value::retain(kBQBooleanFalse), "false"},
      {integer(-9223372036854775807 - 1), "-9223372036854775808"},
      {real(0.1), "0.1"},
      {real(1e300), "1e+300"},
      {real(NAN), "nan"},
      {own(BQNumberCreate(kBQNumberFloatType, &single)), "0.1"},
      {own(BQDateCreate(-77622665)), "1998-07-17T14:08:55Z"},
      {own(BQDateCreate(1e13)), "318888-05-20T17:46:40Z"},
      {own(BQDataCreate("\x00\xFFz!9", 5)), "<5 bytes 00ff7a21 39>"},
      {own(BQDataCreate(nullptr, 0)), "<0 bytes>"},
      {array({}), "[]"},
      {array({nullptr, kBQNull, BQSTR("a\"\\\n\t\r%@é"), integer(1).get()}),
       "[(null), null, \"a\\\"\\\\\\n\\t\\r%@é\", 1]"},
      {dictionary(BQSTR("k"), array({dictionary(integer(2).get(), kBQBooleanTrue).get()}).get()),
       "{\"k\": [{2: true}]}"},
  };
  for (const auto& [value, expected] : kRows) EXPECT_EQ(describe(value.get()), expected);
  std::string longData = describe(own(BQDataCreate(bytes.data(), 70)).get());
  EXPECT_TRUE(longData.starts_with("<70 bytes 41414141 ") && longData.ends_with(" 41414141 ...>"))
      << longData;
}

TEST(Description, ContainersThatHoldThemselvesShowOnce) {
  auto twice = array({nullptr, nullptr});
  BQArraySetValueAtIndex(twice.get(), 0, twice.get());
  BQArraySetValueAtIndex(twice.get(), 1, twice.get());
  EXPECT_EQ(describe(twice.get()), "[..., ...]");

  auto holder = dictionary(BQSTR("self"), twice.get());
  BQDictionarySetValue(holder.get(), BQSTR("me"), holder.get());
  BQArraySetValueAtIndex(twice.get(), 0, holder.get());
  EXPECT_EQ(describe(holder.get()), "{\"self\": [..., ...], \"me\": ...}");

  /* What stands twice beside itself, not inside, is shown twice. */
  auto part = array({integer(1).get()});
  EXPECT_EQ(describe(array({part.get(), part.get()}).get()), "[[1], [1]]");

  BQArrayRemoveAllValues(twice.get());
  BQDictionaryRemoveAllValues(holder.get());
}

TEST(Description, StopsBelowTheDepthLimitOnASmallStack) {
  Value nested = integer(7);
  for (int i = 0; i < 512; ++i) {
    nested = i % 2 == 0 ? Value(array({nested.get()})) : Value(dictionary(BQSTR("k"), nested.get()));
  }
  std::string atLimit, beyond;
  runOnSmallStack([&] {
    atLimit = describe(nested.get());
    beyond = describe(array({nested.get()}).get());
  });
  EXPECT_NE(atLimit.find("[7]"), std::string::npos);
  EXPECT_EQ(beyond.find("[7]"), std::string::npos);
  EXPECT_NE(beyond.find("..."), std::string::npos);
}

/* An instance whose description describes the array that holds it, and so itself, twice. */
struct Loop {
  BQRuntimeBase base;
  const BQArray* holder;
};

TEST(Description, InstancesThatDescribeThemselvesEnd) {
  static const BQRuntimeClass kClass = {
      0, "Loop", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, [](BQTypeRef object) {
        return BQStringCreateWithFormat(BQSTR("loop %@"), static_cast<const Loop*>(object)->holder);
      }};
  auto loop = Value::adopt(
      _BQRuntimeCreateInstance(_BQRuntimeRegisterClass(&kClass), sizeof(Loop) - sizeof(BQRuntimeBase)));
  auto holder = array({loop.get(), loop.get()});
  static_cast<Loop*>(const_cast<void*>(loop.get()))->holder = holder.get();
  EXPECT_EQ(describe(holder.get()), "[loop ..., loop ...]");
  EXPECT_EQ(describe(loop.get()), "loop [..., ...]");
}

}  // namespace
