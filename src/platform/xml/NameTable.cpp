#include "platform/xml/NameTable.h"

#include <algorithm>

#include "platform/text/StringHash.h"
#include "platform/text/StringImpl.h"

namespace bq {
namespace {

bool isName(const Name* entry, std::string_view name) {
  return viewOf(entry->string) == name;
}

size_t quickHash(std::string_view name) {
  auto first = static_cast<unsigned char>(name.front()),
       middle = static_cast<unsigned char>(name[name.size() / 2]),
       last = static_cast<unsigned char>(name.back());
  return name.size() + first * size_t{3} + middle * size_t{11} + last * size_t{29};
}

}  // namespace

Name& NameTable::find(Arena& arena, std::string_view name) {
  Name*& recent = recent_[quickHash(name) % kRecentNames];
  if (recent != nullptr && isName(recent, name)) return *recent;
  uint64_t hash = hashText(name);
  Name*& slot = slotFor(hash, name);
  recent = slot != nullptr ? slot : &add(arena, slot, hash, name);
  return *recent;
}

const BQString* NameTable::attributeName(Arena& arena, Name& name) {
  if (name.attributeName == nullptr) {
    name.attributeName = makeString(viewOf(name.string));
    arena.keep(name.attributeName);
  }
  return name.attributeName;
}

void NameTable::clear() {
  recent_.fill(nullptr);
  if (slots_.size() == kInitialSlots) {
    std::fill(slots_.begin(), slots_.end(), nullptr);
  } else {
    slots_ = std::vector<Name*>(kInitialSlots);
  }
  count_ = 0;
}

Name*& NameTable::slotFor(uint64_t hash, std::string_view name) {
  size_t mask = slots_.size() - 1;
  size_t index = hash & mask;
  while (slots_[index] != nullptr && !(slots_[index]->hash == hash && isName(slots_[index], name))) {
    index = (index + 1) & mask;
  }
  return slots_[index];
}

Name& NameTable::add(Arena& arena, Name*& slot, uint64_t hash, std::string_view name) {
  const BQString* string = makeArenaString(arena, name.data(), name.size());
  Name* entry = new (arena.allocate(sizeof(Name))) Name{hash, string, nullptr};
  slot = entry;
  if (++count_ * 2 > slots_.size()) grow();
  return *entry;
}

void NameTable::grow() {
  std::vector<Name*> old(slots_.size() * 2);
  old.swap(slots_);
  size_t mask = slots_.size() - 1;
  for (Name* entry : old) {
    if (entry == nullptr) continue;
    size_t index = entry->hash & mask;
    while (slots_[index] != nullptr) index = (index + 1) & mask;
    slots_[index] = entry;
  }
}

}  // namespace bq
