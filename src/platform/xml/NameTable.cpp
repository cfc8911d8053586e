#include "platform/xml/NameTable.h"

#include <cstring>

#include <algorithm>

#include "platform/text/StringHash.h"
#include "platform/text/StringImpl.h"

namespace bq {
namespace {

bool isName(const Name* entry, const char* name, size_t length) {
  return entry->string->length == length && std::memcmp(entry->string->bytes, name, length) == 0;
}

size_t quickHash(const char* name, size_t length) {
  auto first = static_cast<unsigned char>(name[0]), middle = static_cast<unsigned char>(name[length / 2]),
       last = static_cast<unsigned char>(name[length - 1]);
  return length + first * size_t{3} + middle * size_t{11} + last * size_t{29};
}

}  // namespace

Name& NameTable::find(Arena& arena, const char* name) {
  size_t length = std::strlen(name);
  Name*& recent = recent_[quickHash(name, length) % kRecentNames];
  if (recent != nullptr && isName(recent, name, length)) return *recent;
  uint64_t hash = hashText({name, length});
  Name*& slot = slotFor(hash, name, length);
  recent = slot != nullptr ? slot : &add(arena, slot, hash, name, length);
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

Name*& NameTable::slotFor(uint64_t hash, const char* name, size_t length) {
  size_t mask = slots_.size() - 1;
  size_t index = hash & mask;
  while (slots_[index] != nullptr && !(slots_[index]->hash == hash && isName(slots_[index], name, length))) {
    index = (index + 1) & mask;
  }
  return slots_[index];
}

Name& NameTable::add(Arena& arena, Name*& slot, uint64_t hash, const char* name, size_t length) {
  Name* entry = new (arena.allocate(sizeof(Name))) Name{hash, makeArenaString(arena, name, length), nullptr};
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
