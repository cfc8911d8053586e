#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "support/PlatformValues.h"

namespace {

using namespace values;

constexpr BQIndex kHuge = std::numeric_limits<BQIndex>::max();

TEST(Array, HoldsWhatItIsGiven) {
  auto held = string("held");
  BQTypeRef slots[] = {held.get(), nullptr, held.get()};
  auto immutable = own(BQArrayCreate(slots, 3));
  EXPECT_EQ(BQGetRetainCount(held.get()), 3);
  EXPECT_EQ(describe(immutable.get()), "[\"held\", (null), \"held\"]");
  EXPECT_EQ(BQArrayGetValueAtIndex(immutable.get(), 0), held.get());
  for (BQIndex index : {BQIndex{-1}, BQIndex{3}, kHuge, -kHuge}) {
    EXPECT_EQ(BQArrayGetValueAtIndex(immutable.get(), index), nullptr) << index;
  }
  immutable = nullptr;
  EXPECT_EQ(BQGetRetainCount(held.get()), 1);
}

TEST(Array, NonsenseIsAnswered) {
  BQTypeRef slot = kBQNull;
  EXPECT_EQ(BQArrayCreate(&slot, -1), nullptr);
  EXPECT_EQ(BQArrayCreate(nullptr, 1), nullptr);
  EXPECT_EQ(BQArrayCreate(&slot, kHuge), nullptr);
  EXPECT_EQ(describe(own(BQArrayCreate(nullptr, 0)).get()), "[]");
  for (BQTypeRef none : {static_cast<BQTypeRef>(nullptr), static_cast<BQTypeRef>(kBQNull)}) {
    auto* array = static_cast<const BQArray*>(none);
    EXPECT_EQ(BQArrayCreateCopy(array), nullptr);
    EXPECT_EQ(BQArrayCreateMutableCopy(0, array), nullptr);
    EXPECT_EQ(BQArrayGetCount(array), 0);
    EXPECT_EQ(BQArrayGetValueAtIndex(array, 0), nullptr);
    EXPECT_FALSE(BQArrayContainsValue(array, nullptr));
  }
}

/* What changes a mutable array does nothing to any other object, and still takes over references. */
TEST(Array, OnlyMutableArraysChange) {
  BQTypeRef slot = BQSTR("kept");
  auto immutable = own(BQArrayCreate(&slot, 1));
  auto value = string("value");
  for (BQTypeRef object : {static_cast<BQTypeRef>(immutable.get()), static_cast<BQTypeRef>(nullptr),
                           static_cast<BQTypeRef>(kBQNull)}) {
    auto* array = static_cast<BQArray*>(const_cast<void*>(object));
    BQArrayAppendValue(array, value.get());
    BQArrayAppendOwnedValue(array, BQRetain(value.get()));
    BQArrayInsertValueAtIndex(array, 0, value.get());
    BQArraySetValueAtIndex(array, 0, value.get());
    BQArrayRemoveValueAtIndex(array, 0);
    BQArrayRemoveAllValues(array);
  }
  EXPECT_EQ(BQGetRetainCount(value.get()), 1);
  EXPECT_EQ(describe(immutable.get()), "[\"kept\"]");
}

TEST(Array, ChangesKeepOrderAndReferences) {
  auto a = string("a"), b = string("b"), c = string("c");
  auto array = own(BQArrayCreateMutable(0));
  BQArrayAppendValue(array.get(), a.get());
  BQArrayAppendOwnedValue(array.get(), BQRetain(c.get()));
  BQArrayInsertValueAtIndex(array.get(), 1, b.get());
  BQArrayInsertValueAtIndex(array.get(), 3, a.get());
  EXPECT_EQ(describe(array.get()), "[\"a\", \"b\", \"c\", \"a\"]");
  for (BQIndex index : {BQIndex{-1}, BQIndex{5}, kHuge})
    BQArrayInsertValueAtIndex(array.get(), index, a.get());
  for (BQIndex index : {BQIndex{-1}, BQIndex{4}, kHuge}) {
    BQArraySetValueAtIndex(array.get(), index, a.get());
    BQArrayRemoveValueAtIndex(array.get(), index);
  }
  BQArraySetValueAtIndex(array.get(), 0, c.get());
  BQArraySetValueAtIndex(array.get(), 2, c.get());
  BQArrayRemoveValueAtIndex(array.get(), 1);
  EXPECT_EQ(describe(array.get()), "[\"c\", \"c\", \"a\"]");
  EXPECT_EQ(BQGetRetainCount(a.get()), 2);
  EXPECT_EQ(BQGetRetainCount(b.get()), 1);
  EXPECT_EQ(BQGetRetainCount(c.get()), 3);
  BQArrayRemoveAllValues(array.get());
  EXPECT_EQ(BQArrayGetCount(array.get()), 0);
  EXPECT_EQ(BQGetRetainCount(c.get()), 1);
}

TEST(Array, GrowsFromAnyCapacity) {
  for (BQIndex capacity : {BQIndex{0}, BQIndex{-1}, BQIndex{3}, kHuge, -kHuge}) {
    auto array = own(BQArrayCreateMutable(capacity));
    for (int i = 0; i < 1000; ++i) BQArrayInsertValueAtIndex(array.get(), i / 2, integer(i).get());
    EXPECT_EQ(BQArrayGetCount(array.get()), 1000);
    EXPECT_TRUE(BQArrayContainsValue(array.get(), real(999).get()));
    EXPECT_FALSE(BQArrayContainsValue(array.get(), nullptr));
    auto copy = own(BQArrayCreateMutableCopy(capacity, array.get()));
    EXPECT_TRUE(BQEqual(array.get(), copy.get()));
  }
}

/* An instance whose end changes the array that held it. */
struct Intruder {
  BQRuntimeBase base;
  BQArray* array;
};

void intrude(BQTypeRef object) {
  BQArrayAppendValue(static_cast<const Intruder*>(object)->array, BQSTR("late"));
}

TEST(Array, ValuesMayChangeTheArrayWhileTheyLeaveIt) {
  static const BQRuntimeClass kClass = {0,       "Intruder", nullptr, nullptr, intrude,
                                        nullptr, nullptr,    nullptr, nullptr};
  static const BQTypeID typeID = _BQRuntimeRegisterClass(&kClass);
  auto array = own(BQArrayCreateMutable(0));
  auto addIntruder = [&array] {
    BQTypeRef object = _BQRuntimeCreateInstance(typeID, sizeof(Intruder) - sizeof(BQRuntimeBase));
    static_cast<Intruder*>(const_cast<void*>(object))->array = array.get();
    BQArrayAppendOwnedValue(array.get(), object);
  };
  for (int i = 0; i < 4; ++i) addIntruder();
  BQArraySetValueAtIndex(array.get(), 0, BQSTR("set"));
  BQArrayRemoveValueAtIndex(array.get(), 1);
  EXPECT_EQ(BQArrayGetCount(array.get()), 5);
  BQArrayRemoveAllValues(array.get());
  EXPECT_EQ(describe(array.get()), "[\"late\", \"late\"]");
}

}  // namespace
