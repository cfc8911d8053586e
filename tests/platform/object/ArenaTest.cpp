#include "platform/object/Arena.h"

#include <BQ/BQ.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform/text/StringImpl.h"
#include "support/PlatformValues.h"

namespace {

using bq::Arena;
using namespace values;

TEST(Arena, ObjectsOfEverySizeFindTheirArena) {
  Arena* arena = Arena::create();
  std::vector<const BQString*> strings;
  /* Below, at and beyond the sizes that get a block of their own, between small ones. */
  for (size_t size : {0u, 1u, 7u, 16000u, 16383u, 16384u, 16385u, 65000u, 65536u, 200000u}) {
    for (int i = 0; i < 20; ++i) {
      std::string content(size, static_cast<char>('a' + i));
      strings.push_back(bq::makeArenaString(*arena, content.data(), content.size()));
      strings.push_back(bq::makeArenaString(*arena, "small", 5));
    }
  }
  for (const BQString* string : strings) {
    ASSERT_EQ(Arena::of(string), arena);
    ASSERT_EQ(reinterpret_cast<uintptr_t>(string) % 8, 0u);
    ASSERT_EQ(std::strlen(BQStringGetUTF8Ptr(string)), static_cast<size_t>(BQStringGetLength(string)));
  }
  arena->release();
}

TEST(Arena, AnyReferenceKeepsTheWholeArenaAndTheLastMayEndOnAnotherThread) {
  Arena* arena = Arena::create();
  auto kept = string("kept");
  arena->keep(BQRetain(kept.get()));
  const BQString* first = bq::makeArenaString(*arena, "first", 5);
  const BQString* second = bq::makeArenaString(*arena, "second", 6);
  EXPECT_EQ(BQStringCreateCopy(first), first);
  EXPECT_EQ(BQGetRetainCount(second), 2);
  arena->release();
  EXPECT_EQ(text(second), "second");
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    BQRetain(second);
    threads.emplace_back([second] {
      for (int round = 0; round < 10000; ++round) BQRelease(BQRetain(second));
      BQRelease(second);
    });
  }
  BQRelease(first);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(BQGetRetainCount(kept.get()), 1);
}

}  // namespace
