/* Which namespace a name is in: what elements declare, how long it holds, how names are looked up in it. */
#include <gtest/gtest.h>

#include <string>

#include "support/Values.h"
#include "xml/ElementWalk.h"
#include "xml/QualifiedName.h"

namespace {

using namespace support;
using vx::NamespaceMap;

std::string namespacesOf(const char* document) {
  Value parsed = tree(document);
  NamespaceMap namespaces;
  vx::xmlGetElementNamespaces(BQTreeGetFirstChild(parsed), &namespaces);
  std::string found;
  for (const char* prefix : {"__defaultNamespace", "p", "Q", "q", "", "a:b"}) {
    const BQString* uri = namespaces.getValue(string(prefix));
    if (uri != nullptr) found += std::string(prefix) + "=" + text(uri) + " ";
  }
  return found;
}

TEST(Namespaces, AreCollectedFromAnElement) {
  EXPECT_EQ(namespacesOf("<a/>"), "");
  EXPECT_EQ(namespacesOf("<a x='1' xmlns='urn:d' xmlns:p='urn:p' xmlnsq='no' XMLNS:Q='urn:q'/>"),
            "__defaultNamespace=urn:d p=urn:p Q=urn:q ");
  EXPECT_EQ(namespacesOf("<a XmlNs='urn:d' xmlns:='no'/>"), "__defaultNamespace=urn:d ");
  EXPECT_EQ(namespacesOf("<a xmlns='' xmlns:a:b=''/>"), "__defaultNamespace= a:b= ");
  NamespaceMap untouched;
  vx::xmlGetElementNamespaces(nullptr, &untouched);
  EXPECT_EQ(untouched.version(), NamespaceMap().version());
}

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

/* Both parts of a split name. */
template <class Split>
std::string split(const Split& splitter) {
  const BQString *uri = BQSTR("before"), *local = BQSTR("before");
  splitter(&uri, &local);
  return notation(Value::adopt(uri).get()) + " " + notation(Value::adopt(local).get());
}

TEST(QualifiedName, ResolvesAgainstTheNamespacesInForce) {
  NamespaceMap none, prefixes, both;
  for (NamespaceMap* map : {&prefixes, &both}) map->addValue(BQSTR("p"), BQSTR("urn:p"));
  both.addValue(BQSTR("__defaultNamespace"), BQSTR("urn:default"));
  const struct {
    const char* name;
    const char* withNone;
    const char* withPrefixes;
    const char* withBoth;
    const char* fully; /* rewritten with both */
  } rows[] = {
      {"p:int", "- 'int'", "'urn:p' 'int'", "'urn:p' 'int'", "urn:p|int"},
      {"p:a:b", "- 'a:b'", "'urn:p' 'a:b'", "'urn:p' 'a:b'", "urn:p|a:b"},
      {"P:int", "- 'int'", "- 'int'", "- 'int'", "P:int"},
      {"q:int", "- 'int'", "- 'int'", "- 'int'", "q:int"},
      {"p:", "- ''", "'urn:p' ''", "'urn:p' ''", "urn:p|"},
      {"int", "- 'int'", "- 'int'", "'urn:default' 'int'", "urn:default|int"},
      {":int", "- ':int'", "- ':int'", "'urn:default' ':int'", "urn:default|:int"},
  };
  for (const auto& row : rows) {
    Value name = string(row.name);
    auto resolved = [&](const NamespaceMap& map) {
      return split([&](auto... out) { vx::xmlNamespaceQualify(map, name, out...); });
    };
    EXPECT_EQ(resolved(none), row.withNone) << row.name;
    EXPECT_EQ(resolved(prefixes), row.withPrefixes) << row.name;
    EXPECT_EQ(resolved(both), row.withBoth) << row.name;
    vx::AutoString rewritten("%s", row.name);
    vx::fullyQualify(rewritten, both);
    EXPECT_EQ(text(rewritten.get()), row.fully);
  }
  EXPECT_EQ(split([&](auto... out) { vx::xmlNamespaceQualify(both, nullptr, out...); }), "'urn:default' -");
  vx::AutoString empty;
  vx::fullyQualify(empty, both);
  EXPECT_TRUE(empty.isEmpty());
}

}  // namespace
