#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "support/PlatformValues.h"

namespace {

using namespace values;
using namespace std::string_literals;

constexpr BQIndex kHuge = std::numeric_limits<BQIndex>::max();

std::string bytes(const BQData* data) {
  return {reinterpret_cast<const char*>(BQDataGetBytePtr(data)), static_cast<size_t>(BQDataGetLength(data))};
}

TEST(Data, NonsenseIsAnswered) {
  EXPECT_EQ(BQDataCreate("x", -1), nullptr);
  EXPECT_EQ(BQDataCreate(nullptr, 1), nullptr);
  EXPECT_EQ(BQDataCreateView("x", -1), nullptr);
  EXPECT_EQ(BQDataCreateView(nullptr, 1), nullptr);
  EXPECT_EQ(BQDataCreateWithOwnedBytes(nullptr, 1), nullptr);
  auto* stranger = reinterpret_cast<BQData*>(const_cast<BQNull*>(kBQNull));
  for (BQData* data : {static_cast<BQData*>(nullptr), stranger}) {
    EXPECT_EQ(BQDataGetLength(data), 0);
    EXPECT_EQ(BQDataGetBytePtr(data), nullptr);
    EXPECT_EQ(BQDataGetMutableBytePtr(data), nullptr);
    EXPECT_EQ(BQDataCreateCopy(data), nullptr);
    EXPECT_EQ(BQDataCreateMutableCopy(data), nullptr);
    BQDataAppendBytes(data, "x", 1);
    BQDataSetLength(data, 1);
  }
  auto immutable = own(BQDataCreate("bytes", 5));
  auto* forced = const_cast<BQData*>(immutable.get());
  EXPECT_EQ(BQDataGetMutableBytePtr(forced), nullptr);
  BQDataAppendBytes(forced, "x", 1);
  BQDataSetLength(forced, 0);
  EXPECT_EQ(bytes(forced), "bytes");
}

TEST(Data, EmptyDataHasAPointer) {
  const Value kRows[] = {own(BQDataCreate(nullptr, 0)), own(BQDataCreateView(nullptr, 0)),
                         own(BQDataCreateWithOwnedBytes(nullptr, 0)), own(BQDataCreateMutable(0))};
  for (const Value& data : kRows) {
    EXPECT_NE(BQDataGetBytePtr(static_cast<const BQData*>(data.get())), nullptr);
    EXPECT_EQ(BQDataGetLength(static_cast<const BQData*>(data.get())), 0);
  }
}

TEST(Data, CopiesOutliveWhatTheyWereMadeFrom) {
  char memory[] = "bytes";
  auto view = own(BQDataCreateView(memory, 5));
  EXPECT_EQ(static_cast<const void*>(BQDataGetBytePtr(view.get())), memory);
  auto copy = own(BQDataCreateCopy(view.get()));
  auto owned = own(BQDataCreateWithOwnedBytes(std::memcpy(std::malloc(5), memory, 5), 5));
  auto changing = own(BQDataCreateMutableCopy(view.get()));
  auto frozen = own(BQDataCreateCopy(changing.get()));
  std::memset(memory, '#', 5);
  BQDataGetMutableBytePtr(changing.get())[0] = '!';
  EXPECT_EQ(bytes(copy.get()), "bytes");
  EXPECT_EQ(bytes(frozen.get()), "bytes");
  EXPECT_EQ(bytes(changing.get()), "!ytes");
  EXPECT_EQ(own(BQDataCreateCopy(copy.get())).get(), copy.get());
  EXPECT_EQ(own(BQDataCreateCopy(owned.get())).get(), owned.get());
}

TEST(Data, GrowsAndShrinks) {
  for (BQIndex capacity : {BQIndex{0}, BQIndex{-1}, kHuge, -kHuge}) {
    auto data = own(BQDataCreateMutable(capacity));
    for (int i = 0; i < 100; ++i) BQDataAppendBytes(data.get(), "0123456789", 10);
    EXPECT_EQ(BQDataGetLength(data.get()), 1000);
    BQDataSetLength(data.get(), 3);
    BQDataSetLength(data.get(), -1);
    BQDataAppendBytes(data.get(), "x", -1);
    BQDataAppendBytes(data.get(), nullptr, 1);
    BQDataSetLength(data.get(), 5); /* what was cut does not come back */
    EXPECT_EQ(bytes(data.get()), "012\0\0"s);
  }
}

TEST(Data, CanBeAppendedToItself) {
  auto data = own(BQDataCreateMutable(0));
  BQDataAppendBytes(data.get(), "ab", 2);
  std::string expected = "ab";
  for (int i = 0; i < 10; ++i) {
    BQDataAppendBytes(data.get(), BQDataGetBytePtr(data.get()), BQDataGetLength(data.get()));
    expected += expected;
    ASSERT_EQ(bytes(data.get()), expected);
  }
}

TEST(Data, ComparesByContent) {
  const std::string content(100, 'x'), other = content.substr(1) + "y";
  auto first = own(BQDataCreate(content.data(), 100)), second = own(BQDataCreateView(content.data(), 100));
  EXPECT_TRUE(BQEqual(first.get(), second.get()));
  EXPECT_EQ(BQHash(first.get()), BQHash(second.get()));
  EXPECT_FALSE(BQEqual(first.get(), own(BQDataCreate(other.data(), 100)).get()));
  EXPECT_FALSE(BQEqual(first.get(), own(BQDataCreate(content.data(), 99)).get()));
  EXPECT_FALSE(BQEqual(first.get(), string(content).get()));
}

}  // namespace
