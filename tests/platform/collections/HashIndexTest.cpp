#include "platform/collections/HashIndex.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>

namespace {

using bq::HashIndex;

uint32_t find(const HashIndex& index, uint32_t hash, uint32_t entry) {
  return index.find(hash, [entry](uint32_t candidate) { return candidate == entry; });
}

uint32_t remove(HashIndex& index, uint32_t hash, uint32_t entry) {
  return index.remove(hash, [entry](uint32_t candidate) { return candidate == entry; });
}

TEST(HashIndex, OneKeyThatComesAndGoesDoesNotFillIt) {
  HashIndex index;
  index.reset(8);
  for (int i = 0; i < 1000; ++i) {
    index.insert(7, 0);
    ASSERT_FALSE(index.isFull()) << i;
    ASSERT_EQ(remove(index, 7, 0), 0u);
    ASSERT_EQ(remove(index, 7, 0), HashIndex::kNone);
  }
}

TEST(HashIndex, EntriesBehindARemovedOneAreFound) {
  /* Hashes that want the last slots of sixteen and run on into the first ones. */
  std::mt19937 random(1);
  HashIndex index;
  index.reset(8);
  auto hashOf = [](uint32_t entry) { return 13 + entry % 5; };
  std::set<uint32_t> model;
  for (int i = 0; i < 5000; ++i) {
    uint32_t entry = random() % 11;
    if (model.erase(entry) != 0) {
      ASSERT_EQ(remove(index, hashOf(entry), entry), entry);
    } else {
      index.insert(hashOf(entry), entry);
      model.insert(entry);
    }
    for (uint32_t other = 0; other < 11; ++other) {
      ASSERT_EQ(find(index, hashOf(other), other), model.contains(other) ? other : HashIndex::kNone)
          << "step " << i << ", entry " << other;
    }
  }
}

}  // namespace
