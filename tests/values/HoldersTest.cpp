#include <gtest/gtest.h>

#include "support/Values.h"
#include "values/ArrayIterator.h"
#include "values/AutoScalar.h"
#include "values/AutoURL.h"
#include "values/DictIterator.h"

namespace {

using namespace support;
using namespace vx;

TEST(AutoScalar, ReadsZeroWhereTheValueDoesNotFit) {
  const struct {
    Value value;
    int asInt;
    double asDouble;
  } rows[] = {{integer(-1), -1, -1}, {integer(1LL << 31, kBQNumberSInt64Type), 0, 2147483648.0},
              {real(2.5), 0, 2.5},   {real(3), 3, 3},
              {string("42"), 0, 0},  {Value(), 0, 0}};
  for (const auto& row : rows) {
    AutoScalar scalar(BQRetain(row.value.get()));
    EXPECT_EQ(scalar.toInt(), row.asInt) << notation(row.value.get());
    EXPECT_EQ(scalar.toDouble(), row.asDouble) << notation(row.value.get());
    EXPECT_FALSE(scalar.isEmpty()) << "never empty";
  }
  EXPECT_EQ(AutoScalar(1e300).toFloat(), 0) << "beyond what a float holds";
}

TEST(AutoString, AppendsFormattedPiecesAndIsEmptyOnlyWithoutString) {
  AutoString holder;
  EXPECT_TRUE(holder.isEmpty());
  EXPECT_FALSE(AutoString(BQSTR("")).isEmpty());
  holder.append("%d", 5);
  EXPECT_EQ(text(holder.get()), "5");
  holder.append("x%@", BQSTR("%d"));
  EXPECT_EQ(text(holder.get()), "5x%d");
}

TEST(AutoString, MayBeSetToItsOwnValueAndReleasesTheOldOne) {
  Value value = string("own");
  AutoString holder;
  holder.setString(value);
  holder.setString(holder.get());
  EXPECT_EQ(BQGetRetainCount(value), 2);
  holder.setString(nullptr);
  EXPECT_EQ(BQGetRetainCount(value), 1);
}

TEST(AutoURL, TakesItsTextLiterally) {
  EXPECT_EQ(text(BQURLGetString(AutoURL("http://localhost/a%20b%5d?x=%25s").get())),
            "http://localhost/a%20b%5d?x=%25s");
  EXPECT_EQ(text(BQURLGetString(AutoURL(AutoString("http://localhost/%d", 7)).get())), "http://localhost/7");
  EXPECT_TRUE(AutoURL("http://a b/").isEmpty()) << "a text that is no URL";
  EXPECT_TRUE(AutoURL(static_cast<const char*>(nullptr)).isEmpty());
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

TEST(AutoArray, ReadsTheSharedEmptyArrayInPlaceOfNone) {
  AutoArray none(static_cast<const BQArray*>(nullptr)), made;
  EXPECT_EQ(none.getImmutableArray(), AutoArray::emptyArray());
  EXPECT_NE(made.getImmutableArray(), AutoArray::emptyArray()) << "made with one of its own";
  none.appendValue(BQSTR("x"));
  EXPECT_EQ(notation(none.getImmutableArray()), "['x']");
  EXPECT_EQ(BQArrayGetCount(AutoArray::emptyArray()), 0) << "nobody writes to the shared array";
}

TEST(AutoArray, AppendsWhatHoldersHoldAndIgnoresNull) {
  AutoArray holder, inner;
  AutoDict dictionary;
  AutoScalar number(5), nothing(static_cast<const void*>(nullptr));
  for (AutoCountable* held :
       {static_cast<AutoCountable*>(&nothing), static_cast<AutoCountable*>(&number),
        static_cast<AutoCountable*>(&dictionary), static_cast<AutoCountable*>(&inner)}) {
    holder.appendValue(*held);
  }
  inner.appendValue(BQSTR("later"));
  EXPECT_EQ(notation(holder.getImmutableArray()), "[5, {}, ['later']]") << "the mutable object itself";
}

TEST(AutoDict, IsSharedUntilTheCopyWrites) {
  AutoDict original, empty;
  EXPECT_EQ(original.getImmutableDict(), empty.getImmutableDict())
      << "none of its own until it is written to";
  original.addValue(BQSTR("k"), BQSTR("v"));
  AutoDict copy(original), copyOfEmpty(empty);
  original.addValue(BQSTR("l"), BQSTR("seen"));
  original.addValue(BQSTR("l"), nullptr);
  EXPECT_EQ(notation(copy.getImmutableDict()), "{k: 'v', l: 'seen'}") << "and null removes nothing";
  copy.addValue(BQSTR("k"), BQSTR("w"));
  copyOfEmpty.addValue(BQSTR("k"), BQSTR("w"));
  EXPECT_EQ(notation(copy.getImmutableDict()), "{k: 'w', l: 'seen'}");
  EXPECT_EQ(notation(original.getImmutableDict()), "{k: 'v', l: 'seen'}");
  EXPECT_EQ(AutoDict().getCount(), 0) << "nobody writes to the shared dictionary";
}

TEST(AutoDict, OwnsWhatItsConstructorsSay) {
  Value immutable = Value::adopt(BQDictionaryCreateCopy(dictionary({{"a", integer(1)}})));
  Value mutableOne = dictionary({});
  {
    AutoDict retaining(static_cast<const BQDictionary*>(immutable));
    BQRetain(mutableOne.get());
    AutoDict adopting(mutableOne.as<BQDictionary>());
    EXPECT_EQ(adopting.getMutableDict(), mutableOne.get()) << "a mutable one is written to in place";
    EXPECT_EQ(Value::adopt(retaining.copyDict()).get(), immutable.get());
    EXPECT_EQ(BQGetRetainCount(immutable), 2);
    retaining.addValue(BQSTR("b"), BQSTR("x"));
    EXPECT_EQ(BQGetRetainCount(immutable), 1) << "given up for a copy";
  }
  EXPECT_EQ(BQGetRetainCount(mutableOne), 1);
  EXPECT_EQ(notation(immutable.get()), "{a: 1}");
}

TEST(Iterators, KeepTheirContainerAlive) {
  Value values = array({integer(1), Value(), integer(3)});
  Value pairs = dictionary({{"b", integer(1)}, {"a", integer(2)}});
  ArrayIterator elements(static_cast<const BQArray*>(values));
  DictIterator keys(static_cast<const BQDictionary*>(pairs));
  values = pairs = Value();
  std::string walked;
  while (elements.hasNext()) walked += notation(elements.next()) + " ";
  while (keys.hasNext()) {
    BQTypeRef key = keys.nextKey();
    walked += text(key) + "=" + notation(keys.valueFor(key)) + " ";
  }
  EXPECT_EQ(walked, "1 - 3 b=1 a=2 ");
  EXPECT_FALSE(ArrayIterator(static_cast<const BQArray*>(nullptr)).hasNext());
  EXPECT_FALSE(DictIterator(static_cast<const BQDictionary*>(nullptr)).hasNext());
}

}  // namespace
