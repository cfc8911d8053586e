#include "xml/NamespaceMap.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"

namespace {

using namespace support;
using vx::NamespaceMap;

std::string lookUp(const NamespaceMap& map, const char* prefix) {
  const BQString* uri = map.getValue(string(prefix));
  return uri == nullptr ? "-" : text(uri);
}

TEST(NamespaceMap, AScopeTakesBackWhatWasAddedInIt) {
  NamespaceMap map;
  map.addValue(BQSTR("a"), BQSTR("urn:1"));
  uint64_t outside = map.version(), inside = 0;
  {
    NamespaceMap::Scope scope(map);
    EXPECT_EQ(map.version(), outside) << "nothing is declared yet";
    map.addValue(BQSTR("a"), BQSTR("urn:2"));
    map.addValue(BQSTR("b"), BQSTR("urn:b"));
    inside = map.version();
    EXPECT_NE(inside, outside);
    {
      NamespaceMap::Scope inner(map);
      map.addValue(BQSTR("a"), BQSTR("urn:3"));
      map.addValue(BQSTR("a"), BQSTR("urn:4"));
      EXPECT_EQ(lookUp(map, "a") + lookUp(map, "b"), "urn:4urn:b");
    }
    EXPECT_EQ(lookUp(map, "a") + lookUp(map, "b"), "urn:2urn:b");
    EXPECT_EQ(map.version(), inside);
  }
  EXPECT_EQ(lookUp(map, "a") + lookUp(map, "b"), "urn:1-");
  EXPECT_EQ(map.version(), outside);
  NamespaceMap::Scope scope(map);
  map.addValue(BQSTR("a"), BQSTR("urn:2"));
  map.addValue(BQSTR("b"), BQSTR("urn:other"));
  EXPECT_EQ(lookUp(map, "b"), "urn:other");
  EXPECT_NE(map.version(), outside);
  EXPECT_NE(map.version(), inside) << "as many declarations, but others";
}

TEST(NamespaceMap, HoldsAnyNumberOfDeclarations) {
  NamespaceMap map;
  auto prefix = [](int number) { return string("p" + std::to_string(number)); };
  for (int i = 0; i < 1000; ++i) map.addValue(prefix(i), BQSTR("urn:outer"));
  for (int i = 0; i < 5000; ++i) {
    NamespaceMap::Scope scope(map);
    map.addValue(prefix(i % 2000), BQSTR("urn:inner"));
    ASSERT_EQ(text(map.getValue(prefix(i % 2000))), "urn:inner") << i;
  }
  for (int i = 0; i < 2000; ++i) EXPECT_EQ(map.getValue(prefix(i)) != nullptr, i < 1000) << i;
  map.addValue(nullptr, BQSTR("urn:none"));
  map.addValue(BQSTR("none"), nullptr);
  EXPECT_EQ(lookUp(map, "none"), "-");
}

}  // namespace
