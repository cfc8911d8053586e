#include <BQ/BQDictionary.h>

#include <cstdlib>
#include <cstring>

#include <algorithm>
#include <memory>

#include <BQ/BQString.h>

#include "platform/collections/ContainerComparison.h"
#include "platform/collections/HashIndex.h"
#include "platform/object/Classes.h"
#include "platform/object/Object.h"
#include "platform/text/StringImpl.h"

namespace bq {
namespace {

constexpr uint16_t kMutable = kClassFlag;
constexpr uint16_t kCopiesStringKeys = kClassFlag << 1;

/* Up to this many pairs a dictionary is searched from its first pair to its last, without hashes. */
constexpr size_t kLargestUnindexed = 8;

struct Pair {
  BQTypeRef key; /* null where a pair was removed */
  BQTypeRef value;
};

bool equalKeys(BQTypeRef first, BQTypeRef second) {
  if (first == second) return true;
  if (first == nullptr) return false;
  if (isString(first) && isString(second)) {
    return viewOf(static_cast<const BQString*>(first)) == viewOf(static_cast<const BQString*>(second));
  }
  return BQEqual(first, second);
}

uint32_t hashKey(BQTypeRef key) {
  auto hash = static_cast<uint64_t>(BQHash(key));
  return static_cast<uint32_t>(hash ^ (hash >> 32));
}

}  // namespace
}  // namespace bq

struct BQDictionary : bq::Object {
  /* The memory after the dictionary has space for `capacity` pairs. */
  explicit BQDictionary(BQTypeID typeID, uint16_t flags, size_t capacity)
      : Object(typeID), pairs_(ownPairs()), capacity_(static_cast<uint32_t>(capacity)) {
    base.flags = flags;
  }
  ~BQDictionary() { releasePairs(pairs_, used_); }

  size_t count() const { return used_ - removed_; }

  BQTypeRef* find(BQTypeRef key) {
    size_t position = findPosition(key);
    return position == kNowhere ? nullptr : &pairs_[position].value;
  }
  BQTypeRef valueFor(BQTypeRef key) const {
    size_t position = findPosition(key);
    return position == kNowhere ? nullptr : pairs_[position].value;
  }
  bool contains(BQTypeRef key) const { return findPosition(key) != kNowhere; }

  /* Appends a pair whose key is not present. Takes over both references. */
  void append(BQTypeRef key, BQTypeRef value) {
    if (pairs_ == nullptr || used_ == capacity_) grow();
    pairs_[used_++] = {key, value};
    if (index_ == nullptr) {
      if (used_ > bq::kLargestUnindexed) rebuildIndex();
    } else if (index_->isFull()) {
      rebuildIndex();
    } else {
      index_->insert(bq::hashKey(key), used_ - 1);
    }
  }

  void remove(BQTypeRef key) {
    size_t position = index_ != nullptr ? takeFromIndex(key) : findPosition(key);
    if (position == kNowhere) return;
    bq::Pair removed = std::exchange(pairs_[position], {nullptr, nullptr});
    ++removed_;
    if (index_ == nullptr) removeGaps();
    for (; used_ > 0 && pairs_[used_ - 1].key == nullptr; --removed_) --used_;
    if (removed_ > used_ / 2) rebuildIndex();
    BQRelease(removed.key);
    BQRelease(removed.value);
  }

  void removeAll() {
    bq::Pair* old = std::exchange(pairs_, nullptr);
    size_t count = std::exchange(used_, 0);
    capacity_ = 0;
    removed_ = 0;
    index_.reset();
    releasePairs(old, count);
  }

  template <class Function>
  void forEach(Function function) const {
    for (size_t i = 0; i < used_; ++i) {
      if (pairs_[i].key != nullptr) function(pairs_[i].key, pairs_[i].value);
    }
  }

 private:
  static constexpr size_t kNowhere = SIZE_MAX;

  struct HasKey {
    const bq::Pair* pairs;
    BQTypeRef key;
    bool operator()(uint32_t entry) const { return bq::equalKeys(pairs[entry].key, key); }
  };

  bq::Pair* ownPairs() { return reinterpret_cast<bq::Pair*>(this + 1); }

  void grow() {
    capacity_ += capacity_ / 2 + 1;
    bool isOwn = pairs_ == ownPairs();
    void* grown = bq::reallocate(isOwn ? nullptr : pairs_, capacity_ * sizeof(bq::Pair));
    if (isOwn && used_ > 0) std::memcpy(grown, pairs_, used_ * sizeof(bq::Pair));
    pairs_ = static_cast<bq::Pair*>(grown);
  }

  size_t findPosition(BQTypeRef key) const {
    if (index_ != nullptr) return positionOf(index_->find(bq::hashKey(key), HasKey{pairs_, key}));
    for (size_t i = 0; i < used_; ++i) {
      if (bq::equalKeys(pairs_[i].key, key)) return i;
    }
    return kNowhere;
  }

  size_t takeFromIndex(BQTypeRef key) {
    auto hashOf = [this](uint32_t entry) { return bq::hashKey(pairs_[entry].key); };
    return positionOf(index_->remove(bq::hashKey(key), HasKey{pairs_, key}, hashOf));
  }

  static size_t positionOf(uint32_t entry) { return entry == bq::HashIndex::kNone ? kNowhere : entry; }

  void removeGaps() {
    auto isGap = [](const bq::Pair& pair) { return pair.key == nullptr; };
    used_ = static_cast<uint32_t>(std::remove_if(pairs_, pairs_ + used_, isGap) - pairs_);
    removed_ = 0;
  }

  void rebuildIndex() {
    removeGaps();
    if (index_ == nullptr) index_ = std::make_unique<bq::HashIndex>();
    index_->reset(used_);
    for (uint32_t i = 0; i < used_; ++i) index_->insert(bq::hashKey(pairs_[i].key), i);
  }

  /* Releases what the pairs hold, and their memory unless it is that of the dictionary. */
  void releasePairs(bq::Pair* pairs, size_t count) {
    for (size_t i = 0; i < count; ++i) {
      BQRelease(pairs[i].key);
      BQRelease(pairs[i].value);
    }
    if (pairs != ownPairs()) std::free(pairs);
  }

  bq::Pair* pairs_;
  uint32_t capacity_;
  uint32_t used_ = 0;
  uint32_t removed_ = 0;
  std::unique_ptr<bq::HashIndex> index_;
};

namespace bq {
namespace {

const BQDictionary* asDictionary(BQTypeRef object) {
  return static_cast<const BQDictionary*>(object);
}
bool isDictionary(BQTypeRef object) {
  return isInstance(object, kDictionaryTypeID);
}
bool isMutable(BQDictionary* dictionary) {
  return isDictionary(dictionary) && dictionary->hasFlag(kMutable);
}

bool equalPairs(BQTypeRef first, BQTypeRef second) {
  const BQDictionary* right = asDictionary(second);
  bool equal = true;
  asDictionary(first)->forEach([right, &equal](BQTypeRef key, BQTypeRef value) {
    equal =
        equal && BQEqual(value, right->valueFor(key)); /* null, and so unlike any value, if there is none */
  });
  return equal;
}

bool equalDictionaries(BQTypeRef first, BQTypeRef second) {
  return asDictionary(first)->count() == asDictionary(second)->count() &&
         compareContainers(first, second, equalPairs);
}

BQHashCode hashDictionary(BQTypeRef object) {
  return asDictionary(object)->count();
}

BQDictionary* makeDictionary(uint16_t flags, BQIndex capacity) {
  size_t count = capacityHint(capacity);
  return new (allocate(sizeof(BQDictionary) + count * sizeof(Pair)))
      BQDictionary(kDictionaryTypeID, flags, count);
}

BQTypeRef copyKey(const BQDictionary* dictionary, BQTypeRef key) {
  if (dictionary->hasFlag(kCopiesStringKeys) && isString(key)) {
    return BQStringCreateCopy(static_cast<const BQString*>(key));
  }
  return BQRetain(key);
}

void setValue(BQDictionary* dictionary, BQTypeRef key, BQTypeRef value) {
  BQRetain(value);
  if (BQTypeRef* present = dictionary->find(key)) {
    BQRelease(std::exchange(*present, value));
  } else {
    dictionary->append(copyKey(dictionary, key), value);
  }
}

/* The keys of the original are distinct, so none is looked up. */
BQDictionary* copyPairs(const BQDictionary* original, uint16_t flags, BQIndex capacity) {
  auto count = static_cast<BQIndex>(original->count());
  BQDictionary* copy = makeDictionary(flags, capacity > count ? capacity : count);
  original->forEach([copy](BQTypeRef key, BQTypeRef value) { copy->append(BQRetain(key), BQRetain(value)); });
  return copy;
}

}  // namespace

const BQRuntimeClass kDictionaryClass = {0,
                                         "BQDictionary",
                                         nullptr,
                                         nullptr,
                                         finalizeObject<BQDictionary>,
                                         equalDictionaries,
                                         hashDictionary,
                                         nullptr,
                                         nullptr};

}  // namespace bq

using bq::isDictionary;
using bq::isMutable;

BQTypeID BQDictionaryGetTypeID(void) {
  return bq::kDictionaryTypeID;
}

const BQDictionary* BQDictionaryCreate(const BQTypeRef* keys, const BQTypeRef* values, BQIndex count) {
  if (count < 0 || (count > 0 && (keys == nullptr || values == nullptr))) return nullptr;
  BQDictionary* dictionary = bq::makeDictionary(0, count);
  for (BQIndex i = 0; i < count; ++i) {
    if (keys[i] != nullptr && values[i] != nullptr) bq::setValue(dictionary, keys[i], values[i]);
  }
  return dictionary;
}

const BQDictionary* BQDictionaryCreateCopy(const BQDictionary* dictionary) {
  if (!isDictionary(dictionary)) return nullptr;
  if (!dictionary->hasFlag(bq::kMutable)) return static_cast<const BQDictionary*>(BQRetain(dictionary));
  return bq::copyPairs(dictionary, 0, 0);
}

BQDictionary* BQDictionaryCreateMutable(BQIndex capacity, BQDictionaryKeys keys) {
  uint16_t rule = keys == kBQDictionaryCopyStringKeys ? bq::kCopiesStringKeys : uint16_t{0};
  return bq::makeDictionary(bq::kMutable | rule, capacity);
}

BQDictionary* BQDictionaryCreateMutableCopy(BQIndex capacity, const BQDictionary* dictionary) {
  if (!isDictionary(dictionary)) return nullptr;
  uint16_t rule = dictionary->base.flags & bq::kCopiesStringKeys;
  return bq::copyPairs(dictionary, bq::kMutable | rule, capacity);
}

BQIndex BQDictionaryGetCount(const BQDictionary* dictionary) {
  return isDictionary(dictionary) ? static_cast<BQIndex>(dictionary->count()) : 0;
}

BQTypeRef BQDictionaryGetValue(const BQDictionary* dictionary, BQTypeRef key) {
  return isDictionary(dictionary) && key != nullptr ? dictionary->valueFor(key) : nullptr;
}

bool BQDictionaryContainsKey(const BQDictionary* dictionary, BQTypeRef key) {
  return isDictionary(dictionary) && key != nullptr && dictionary->contains(key);
}

void BQDictionaryGetKeysAndValues(const BQDictionary* dictionary, BQTypeRef* keys, BQTypeRef* values) {
  if (!isDictionary(dictionary)) return;
  dictionary->forEach([&keys, &values](BQTypeRef key, BQTypeRef value) {
    if (keys != nullptr) *keys++ = key;
    if (values != nullptr) *values++ = value;
  });
}

void BQDictionarySetValue(BQDictionary* dictionary, BQTypeRef key, BQTypeRef value) {
  if (isMutable(dictionary) && key != nullptr && value != nullptr) bq::setValue(dictionary, key, value);
}

void BQDictionaryAddValue(BQDictionary* dictionary, BQTypeRef key, BQTypeRef value) {
  if (!isMutable(dictionary) || key == nullptr || value == nullptr || dictionary->contains(key)) return;
  dictionary->append(bq::copyKey(dictionary, key), BQRetain(value));
}

void BQDictionaryRemoveValue(BQDictionary* dictionary, BQTypeRef key) {
  if (isMutable(dictionary) && key != nullptr) dictionary->remove(key);
}

void BQDictionaryRemoveAllValues(BQDictionary* dictionary) {
  if (isMutable(dictionary)) dictionary->removeAll();
}
