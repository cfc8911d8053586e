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
  EXPECT_EQ(notation(values.get()) + notation(pairs.get()), "[1]{a: 1}") << "the bases do not change";
  EXPECT_EQ(notation(Value::adopt(copyDictionaryKeys(more)).get()), "['a', 'b']");
  EXPECT_EQ(Value::adopt(copyDictionaryKeys(nullptr)).get(), AutoArray::emptyArray());
  for (int value : {-4, -3, 0, 11, 12})
    EXPECT_EQ(notation(internedInt(value)), value >= -3 && value <= 11 ? std::to_string(value) : "-");
}

TEST(Holders, WriteToACopyOfWhatTheyShare) {
  Value values = Value::adopt(BQArrayCreateCopy(array({integer(1)})));
  Value pairs = Value::adopt(BQDictionaryCreateCopy(dictionary({{"a", integer(1)}})));
  {
    AutoArray list(static_cast<const BQArray*>(BQRetain(values.get()))),
        none(static_cast<const BQArray*>(nullptr));
    AutoDict first(static_cast<const BQDictionary*>(pairs)), second(first), empty;
    EXPECT_EQ(list.getImmutableArray(), values.get()) << "reading does not copy";
    EXPECT_TRUE(none.isEmpty() && empty.isEmpty());
    for (const Value& added : {string("x"), Value()}) {
      list.appendValue(added.get());
      none.appendValue(added.get());
    }
    second.addValue(BQSTR("b"), BQSTR("x"));
    second.addValue(BQSTR("a"), nullptr);
    EXPECT_EQ(notation(list.getRef()) + notation(none.getRef()), "[1, 'x']['x']");
    EXPECT_EQ(notation(second.getRef()) + notation(first.getRef()), "{a: 1, b: 'x'}{a: 1}");
  }
  EXPECT_EQ(BQGetRetainCount(values) + BQGetRetainCount(pairs), 2) << "what they held is released";
}

}  // namespace
