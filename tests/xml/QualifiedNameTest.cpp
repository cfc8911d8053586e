#include "xml/QualifiedName.h"

#include <gtest/gtest.h>

#include "support/Values.h"

namespace {

using namespace support;

/* Both parts of a split name. */
template <class Split>
std::string split(const Split& splitter) {
  const BQString *uri = BQSTR("before"), *local = BQSTR("before");
  splitter(&uri, &local);
  return notation(Value::adopt(uri).get()) + " " + notation(Value::adopt(local).get());
}

TEST(QualifiedName, SplitsAtTheFirstBar) {
  const std::pair<const char*, const char*> rows[] = {
      {"urn:x|int", "'urn:x' 'int'"}, {"a|b|c", "'a' 'b|c'"}, {"a|", "'a' ''"}, {"int", "'' 'int'"},
      {"|int", "'' '|int'"},          {"", "'' ''"},
  };
  for (auto [name, parts] : rows) {
    Value held = string(name);
    EXPECT_EQ(split([&](auto... out) { vx::xmlBurstFullyQualifiedName(held, out...); }), parts) << name;
  }
  EXPECT_EQ(split([](auto... out) { vx::xmlBurstFullyQualifiedName(nullptr, out...); }), "'' -");
}

TEST(QualifiedName, ResolvesAgainstTheNamespacesInForce) {
  vx::NamespaceMap none, prefixes, both;
  for (vx::NamespaceMap* map : {&prefixes, &both}) map->addValue(BQSTR("p"), BQSTR("urn:p"));
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
    auto resolved = [&](const vx::NamespaceMap& map) {
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
