#include "soap/RepeatingDictionary.h"

#include <BQ/BQ.h>

#include "values/DictIterator.h"

namespace vx {

RepeatingDictionary::RepeatingDictionary()
    : dictionary_(own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys))) {}

void RepeatingDictionary::add(const BQString* name, BQTypeRef value) {
  BQTypeRef present = BQDictionaryGetValue(dictionary_.get(), name);
  if (present == nullptr) return BQDictionarySetValue(dictionary_.get(), name, value);
  if (!isMade(present)) present = replace(name, present);
  BQArrayAppendValue(static_cast<BQArray*>(const_cast<void*>(present)), value);
}

/* Copies take less memory, except that a large one needs its own while the original still exists. */
Owned<const void> RepeatingDictionary::take() {
  constexpr BQIndex kSmall = 64;
  if (BQDictionaryGetCount(dictionary_.get()) > kSmall) return own<const void>(dictionary_.release());
  for (DictIterator entries(made_ != nullptr ? dictionary_.get() : nullptr); entries.hasNext();) {
    BQTypeRef name = entries.nextKey(), value = entries.valueFor(name);
    auto* array = static_cast<const BQArray*>(isMade(value) ? value : nullptr);
    if (array == nullptr || BQArrayGetCount(array) > kSmall) continue;
    BQDictionarySetValue(dictionary_.get(), name, own(BQArrayCreateCopy(array)).get());
  }
  return own<const void>(BQDictionaryCreateCopy(dictionary_.get()));
}

bool RepeatingDictionary::isMade(BQTypeRef array) const {
  return made_ != nullptr && made_->contains(array);
}

/* Puts an array in place of a value: a copy of it if it is one, else one that holds it. */
BQTypeRef RepeatingDictionary::replace(const BQString* name, BQTypeRef present) {
  bool isArrayValue = BQGetTypeID(present) == BQArrayGetTypeID();
  auto array = own(isArrayValue ? BQArrayCreateMutableCopy(0, static_cast<const BQArray*>(present))
                                : BQArrayCreateMutable(0));
  if (!isArrayValue) BQArrayAppendValue(array.get(), present);
  BQTypeRef made = array.get();
  BQDictionarySetValue(dictionary_.get(), name, made);
  if (made_ == nullptr) made_ = std::make_unique<std::unordered_set<BQTypeRef>>();
  made_->insert(made);
  return made;
}

}  // namespace vx
