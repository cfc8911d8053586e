#include <gtest/gtest.h>

#include "support/Values.h"
#include "values/AutoArray.h"
#include "values/AutoDict.h"
#include "values/AutoScalar.h"

namespace {

using namespace support;
using vx::AutoArray;
using vx::AutoDict;

TEST(AutoArray, HasAnArrayOfItsOwnFromTheStart) {
  AutoArray holder;
  EXPECT_TRUE(holder.isEmpty());
  EXPECT_NE(holder.getImmutableArray(), AutoArray::emptyArray());
  EXPECT_EQ(holder.getImmutableArray(), holder.getMutableArray());
}

TEST(AutoArray, ReadsTheSharedEmptyArrayInPlaceOfNone) {
  AutoArray first(static_cast<const BQArray*>(nullptr)), second(static_cast<BQArray*>(nullptr));
  EXPECT_EQ(first.getImmutableArray(), AutoArray::emptyArray());
  EXPECT_EQ(second.getImmutableArray(), AutoArray::emptyArray());
  EXPECT_TRUE(first.isEmpty());
  first.appendValue(BQSTR("x"));
  EXPECT_EQ(notation(first.getImmutableArray()), "['x']");
  EXPECT_EQ(BQArrayGetCount(AutoArray::emptyArray()), 0) << "nobody writes to the shared array";
}

TEST(AutoArray, CopiesAnImmutableArrayOnTheFirstWrite) {
  Value shared = Value::adopt(BQArrayCreateCopy(array({integer(1)})));
  AutoArray holder(static_cast<const BQArray*>(BQRetain(shared.get())));
  EXPECT_EQ(holder.getImmutableArray(), shared.get()) << "reading does not copy";
  EXPECT_EQ(BQGetRetainCount(shared), 2) << "the reference was taken over, none added";
  holder.appendValue(integer(2).get());
  EXPECT_EQ(notation(holder.getImmutableArray()), "[1, 2]");
  EXPECT_EQ(notation(shared.get()), "[1]");
  EXPECT_EQ(BQGetRetainCount(shared), 1);
}

TEST(AutoArray, AppendsWhatHoldersHoldAndIgnoresNull) {
  AutoArray holder, inner;
  AutoDict dictionary;
  vx::AutoScalar number(5), nothing(static_cast<const void*>(nullptr));
  holder.appendValue(nullptr);
  holder.appendValue(nothing);
  EXPECT_TRUE(holder.isEmpty());
  holder.appendValue(number);
  holder.appendValue(dictionary);
  holder.appendValue(inner);
  inner.appendValue(BQSTR("later"));
  EXPECT_EQ(notation(holder.getImmutableArray()), "[5, {}, ['later']]") << "the mutable object itself";
}

TEST(AutoDict, AllocatesNothingUntilItIsWrittenTo) {
  AutoDict first, second;
  EXPECT_EQ(first.getCount(), 0);
  EXPECT_TRUE(first.isEmpty());
  EXPECT_EQ(first.getValue(BQSTR("k")), nullptr);
  EXPECT_EQ(first.getImmutableDict(), second.getImmutableDict()) << "the shared empty dictionary";
  first.addValue(BQSTR("k"), nullptr);
  EXPECT_EQ(first.getImmutableDict(), second.getImmutableDict()) << "null is no write";
  first.addValue(BQSTR("k"), BQSTR("v"));
  EXPECT_EQ(notation(first.getImmutableDict()), "{k: 'v'}");
  EXPECT_EQ(second.getCount(), 0);
}

TEST(AutoDict, SharesADictionaryUntilTheCopyWrites) {
  AutoDict original;
  original.addValue(BQSTR("k"), BQSTR("v"));
  AutoDict copy(original);
  EXPECT_EQ(copy.getImmutableDict(), original.getImmutableDict());
  original.addValue(BQSTR("l"), BQSTR("seen"));
  EXPECT_EQ(notation(copy.getImmutableDict()), "{k: 'v', l: 'seen'}");
  copy.addValue(BQSTR("k"), BQSTR("w"));
  EXPECT_EQ(notation(original.getImmutableDict()), "{k: 'v', l: 'seen'}");
  EXPECT_EQ(notation(copy.getImmutableDict()), "{k: 'w', l: 'seen'}");
}

TEST(AutoDict, ACopyOfAnEmptyOneIsIndependent) {
  AutoDict original;
  AutoDict copy(original);
  copy.addValue(BQSTR("k"), BQSTR("v"));
  EXPECT_EQ(AutoDict().getCount(), 0) << "nobody writes to the shared dictionary";
  original.addValue(BQSTR("l"), BQSTR("w"));
  EXPECT_EQ(notation(copy.getImmutableDict()), "{k: 'v'}");
}

TEST(AutoDict, NullDoesNotRemoveAnEntry) {
  AutoDict holder;
  holder.addValue(BQSTR("k"), BQSTR("v"));
  holder.addValue(BQSTR("k"), nullptr);
  vx::AutoString key("%s", "k");
  EXPECT_EQ(notation(holder.getValue(key)), "'v'");
}

TEST(AutoDict, OwnsWhatItsConstructorsSay) {
  Value immutable = Value::adopt(BQDictionaryCreateCopy(dictionary({{"a", integer(1)}})));
  Value mutableOne = dictionary({});
  {
    AutoDict retaining(static_cast<const BQDictionary*>(immutable));
    BQRetain(mutableOne.get());
    AutoDict adopting(mutableOne.as<BQDictionary>());
    EXPECT_EQ(BQGetRetainCount(immutable), 2);
    EXPECT_EQ(adopting.getMutableDict(), mutableOne.get()) << "a mutable one is written to in place";
    Value copy = Value::adopt(retaining.copyDict());
    EXPECT_EQ(copy.get(), immutable.get());
    EXPECT_EQ(BQGetRetainCount(immutable), 3);
    retaining.addValue(BQSTR("b"), BQSTR("x"));
    EXPECT_EQ(BQGetRetainCount(immutable), 2) << "given up for a copy";
  }
  EXPECT_EQ(BQGetRetainCount(immutable), 1);
  EXPECT_EQ(BQGetRetainCount(mutableOne), 1);
  EXPECT_EQ(notation(immutable.get()), "{a: 1}");
}

}  // namespace
