#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"
#include "values/ArrayIterator.h"
#include "values/DictIterator.h"

namespace {

using namespace support;
using vx::ArrayIterator;
using vx::DictIterator;

TEST(ArrayIterator, WalksOverAnArrayThatItKeepsAlive) {
  auto* values = array({integer(1), Value(), integer(3)}).as<BQArray>();
  BQRetain(values);
  std::string walked;
  {
    ArrayIterator iterator(values);
    BQRelease(values);
    for (; iterator.hasNext(); walked += " ") walked += notation(iterator.next());
    EXPECT_EQ(iterator.index, 3);
  }
  EXPECT_EQ(walked, "1 - 3 ");
}

TEST(Iterators, HaveNothingToWalkOverWithoutAContainer) {
  EXPECT_FALSE(ArrayIterator(static_cast<const BQArray*>(nullptr)).hasNext());
  EXPECT_FALSE(ArrayIterator(vx::AutoArray()).hasNext());
  EXPECT_FALSE(DictIterator(static_cast<const BQDictionary*>(nullptr)).hasNext());
  DictIterator iterator{vx::AutoDict()};
  EXPECT_FALSE(iterator.hasNext());
  EXPECT_EQ(iterator.keys, nullptr);
}

TEST(DictIterator, WalksOverADictionaryThatItKeepsAlive) {
  Value values = dictionary({{"b", integer(1)}, {"a", integer(2)}, {"c", integer(3)}});
  std::string walked;
  DictIterator iterator{static_cast<const BQDictionary*>(values)};
  values = Value();
  while (iterator.hasNext()) {
    BQTypeRef key = iterator.nextKey();
    walked += text(key) + "=" + notation(iterator.valueFor(key)) + " ";
  }
  EXPECT_EQ(walked, "b=1 a=2 c=3 ");
  EXPECT_EQ(iterator.valueFor(nullptr), nullptr);
  EXPECT_EQ(BQGetRetainCount(iterator.dict), 1);
}

}  // namespace
