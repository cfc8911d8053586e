#include "platform/xml/AttributeTable.h"

#include <algorithm>
#include <new>

#include "platform/text/StringImpl.h"

namespace bq {
namespace {

size_t hashOf(std::span<const Attribute> attributes) {
  size_t hash = attributes.size();
  auto add = [&hash](std::string_view text) {
    constexpr size_t kHashed = 64;
    for (char c : text.substr(0, kHashed)) hash = hash * 31 + static_cast<unsigned char>(c);
  };
  for (const Attribute& attribute : attributes) {
    add(attribute.name);
    add(attribute.value);
  }
  return hash;
}

bool isEqual(const AttributeEntry& entry, const Attribute& attribute) {
  return viewOf(entry.name) == attribute.name && viewOf(entry.value) == attribute.value;
}

const AttributeList* makeList(Arena& arena, NameTable& names, std::span<const Attribute> attributes) {
  size_t size = sizeof(AttributeList) + attributes.size() * sizeof(AttributeEntry);
  auto* list = new (arena.allocate(size)) AttributeList{attributes.size()};
  auto* entry = reinterpret_cast<AttributeEntry*>(list + 1);
  for (const Attribute& attribute : attributes) {
    const BQString* name = names.find(arena, attribute.name);
    if (name == nullptr) return nullptr;
    std::string_view value = attribute.value;
    new (entry++)
        AttributeEntry{name, value.empty() ? BQSTR("") : makeArenaString(arena, value.data(), value.size())};
  }
  return list;
}

}  // namespace

const AttributeList* AttributeTable::find(Arena& arena, NameTable& names,
                                          std::span<const Attribute> attributes) {
  const AttributeList*& recent = recent_[hashOf(attributes) % kRecentLists];
  if (recent != nullptr && std::ranges::equal(recent->entries(), attributes, isEqual)) return recent;
  const AttributeList* list = makeList(arena, names, attributes);
  if (list != nullptr) recent = list;
  return list;
}

}  // namespace bq
