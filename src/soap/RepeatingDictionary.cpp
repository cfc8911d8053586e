#include "soap/RepeatingDictionary.h"

#include <BQ/BQ.h>

namespace vx {

RepeatingDictionary::RepeatingDictionary()
    : dictionary_(own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys))) {}

void RepeatingDictionary::add(const BQString* name, BQTypeRef value) {
  BQTypeRef present = BQDictionaryGetValue(dictionary_.get(), name);
  if (present == nullptr) return BQDictionarySetValue(dictionary_.get(), name, value);
  if (!isMade(present)) present = replace(name, present);
  BQArrayAppendValue(static_cast<BQArray*>(const_cast<void*>(present)), value);
}

Owned<const void> RepeatingDictionary::copy() const {
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
