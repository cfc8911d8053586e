#include "platform/xml/NameTable.h"

#include <algorithm>

#include "platform/text/StringHash.h"
#include "platform/text/StringImpl.h"

namespace bq {
namespace {

size_t quickHash(std::string_view name) {
  auto first = static_cast<unsigned char>(name.front()),
       middle = static_cast<unsigned char>(name[name.size() / 2]),
       last = static_cast<unsigned char>(name.back());
  return name.size() + first * size_t{3} + middle * size_t{11} + last * size_t{29};
}

}  // namespace

void NameTable::begin(size_t limit) {
  recent_.fill(nullptr);
  if (slots_.size() == kInitialSlots) {
    std::fill(slots_.begin(), slots_.end(), nullptr);
  } else {
    slots_ = std::vector<const BQString*>(kInitialSlots);
  }
  count_ = 0;
  limit_ = limit;
}

const BQString* NameTable::find(Arena& arena, std::string_view name) {
  const BQString*& recent = recent_[quickHash(name) % kRecentNames];
  if (recent != nullptr && viewOf(recent) == name) return recent;
  uint64_t hash = hashText(name);
  const BQString* known = slotFor(hash, name);
  if (known == nullptr) {
    if (count_ == limit_) return nullptr;
    if (4 * ++count_ > 3 * slots_.size()) grow();
    known = slotFor(hash, name) = makeArenaString(arena, name.data(), name.size());
  }
  return recent = known;
}

/* Where the name is, or else the free slot for it. */
const BQString*& NameTable::slotFor(uint64_t hash, std::string_view name) {
  size_t mask = slots_.size() - 1;
  size_t index = hash & mask;
  while (slots_[index] != nullptr && viewOf(slots_[index]) != name) index = (index + 1) & mask;
  return slots_[index];
}

void NameTable::grow() {
  std::vector<const BQString*> old(slots_.size() * 2);
  old.swap(slots_);
  for (const BQString* name : old) {
    if (name != nullptr) slotFor(hashText(viewOf(name)), viewOf(name)) = name;
  }
}

}  // namespace bq
