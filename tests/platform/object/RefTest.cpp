#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <type_traits>
#include <utility>

namespace {

using Data = BQRef<BQData>;
using Any = BQRef<const void>;

static_assert(std::is_convertible_v<Data, BQRef<const BQData>> && std::is_convertible_v<Data, Any>);
static_assert(!std::is_convertible_v<BQRef<const BQData>, Data> && !std::is_convertible_v<Any, Data>);
static_assert(!std::is_convertible_v<BQData*, Data>, "whether to adopt or to retain has to be said");

TEST(Ref, CountsItsReferencesOnceEach) {
  BQData* object = BQDataCreateMutable(0);
  auto count = [object] { return BQGetRetainCount(object); };
  auto adopted = BQAdopt(object);
  EXPECT_EQ(count(), 1);
  {
    auto retained = Data::retain(object);
    Data copied = retained;
    EXPECT_EQ(count(), 3);
    Any moved = std::move(retained);
    EXPECT_EQ(count(), 3) << "a move adds none";
    EXPECT_EQ(retained, nullptr);
    EXPECT_EQ(moved.get(), object);
    Data& itself = copied;
    copied = itself;
    EXPECT_EQ(count(), 3);
    copied = nullptr;
    EXPECT_FALSE(copied);
    EXPECT_EQ(count(), 2) << "what was held before is released";
  }
  EXPECT_EQ(count(), 1);
  BQRetain(object);
  EXPECT_EQ(adopted.release(), object);
  EXPECT_EQ(adopted.get(), nullptr);
  EXPECT_EQ(count(), 2) << "released by nobody";
  BQRelease(object);
  BQRelease(object);
}

}  // namespace
