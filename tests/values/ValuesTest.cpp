#include <gtest/gtest.h>

#include "support/Values.h"
#include "values/AutoArray.h"
#include "values/AutoDict.h"
#include "values/Construction.h"

namespace {

using namespace support;
using namespace vx;

const void* const kEnd = nullptr;

TEST(Construction, EndsAtTheFirstNull) {
  Value values = array({integer(1)}), pairs = dictionary({{"a", integer(1)}});
  Value longer = Value::adopt(bqTypeCreateArray(values, BQSTR("a"), kEnd, BQSTR("b"), kEnd));
  Value more = Value::adopt(bqTypeCreateDictionary(pairs, BQSTR("b"), BQSTR("x"), BQSTR("c"), kEnd));
  EXPECT_EQ(notation(longer.get()) + notation(more.get()), "[1, 'a']{a: 1, b: 'x'}");
  EXPECT_EQ(notation(values.get()) + notation(pairs.get()), "[1]{a: 1}") << "the bases stay as they are";
  EXPECT_EQ(notation(Value::adopt(bqTypeCreateArray(nullptr, kEnd)).get()), "[]");
  EXPECT_EQ(notation(Value::adopt(copyDictionaryKeys(more)).get()), "['a', 'b']");
  EXPECT_EQ(Value::adopt(copyDictionaryKeys(nullptr)).get(), AutoArray::emptyArray());
}

TEST(Construction, InternsSmallIntegersOnly) {
  for (int value = -5; value <= 13; ++value) {
    bool isInterned = value >= -3 && value <= 11;
    EXPECT_EQ(notation(internedInt(value)), isInterned ? std::to_string(value) : "-");
    EXPECT_EQ(internedInt(value), internedInt(value));
  }
}

TEST(Holders, WriteToACopyOfWhatTheyShare) {
  Value values = Value::adopt(BQArrayCreateCopy(array({integer(1)})));
  Value pairs = Value::adopt(BQDictionaryCreateCopy(dictionary({{"a", integer(1)}})));
  AutoArray list(static_cast<const BQArray*>(BQRetain(values.get()))),
      none(static_cast<const BQArray*>(nullptr));
  AutoDict first(static_cast<const BQDictionary*>(pairs)), second(first), empty;
  EXPECT_EQ(list.getImmutableArray(), values.get()) << "reading does not copy";
  EXPECT_TRUE(none.isEmpty() && empty.isEmpty());
  list.appendValue(integer(2).get());
  none.appendValue(BQSTR("x"));
  none.appendValue(nullptr);
  second.addValue(BQSTR("b"), BQSTR("x"));
  second.addValue(BQSTR("a"), nullptr);
  empty.addValue(BQSTR("a"), BQSTR("x"));
  EXPECT_EQ(notation(list.getRef()) + notation(none.getRef()), "[1, 2]['x']");
  EXPECT_EQ(notation(second.getRef()) + notation(first.getRef()), "{a: 1, b: 'x'}{a: 1}");
  EXPECT_EQ(notation(AutoArray::emptyArray()) + notation(AutoDict().getImmutableDict()), "[]{}");
  EXPECT_EQ(BQGetRetainCount(values), 1) << "given up for the copy";
  EXPECT_EQ(BQGetRetainCount(pairs), 1);
}

TEST(Holders, ReleaseWhatTheyTakeOver) {
  Value values = array({}), pairs = dictionary({});
  BQRetain(values.get());
  BQRetain(pairs.get());
  static_cast<void>(AutoArray(values.as<BQArray>()));
  static_cast<void>(AutoDict(pairs.as<BQDictionary>()));
  EXPECT_EQ(BQGetRetainCount(values) + BQGetRetainCount(pairs), 2);
}

TEST(Holders, AppendFormattedTexts) {
  AutoString text;
  text.append("%d", 5);
  text.append("x%@ caf\x8e", BQSTR("%d"));
  text.setString(text.get());
  EXPECT_EQ(notation(text.get()), "'5x%d caf\u00e9'");
}

}  // namespace
