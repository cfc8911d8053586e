#include <BQ/BQDictionary.h>

#include <cstring>

#include <memory>
#include <vector>

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
  explicit BQDictionary(BQTypeID typeID, uint16_t flags, size_t capacity) : Object(typeID) {
    base.flags = flags;
    pairs_.reserve(capacity);
  }
  ~BQDictionary() { releasePairs(pairs_); }

  size_t count() const { return pairs_.size() - removed_; }

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
    pairs_.push_back({key, value});
    if (index_ == nullptr) {
      if (pairs_.size() > bq::kLargestUnindexed) rebuildIndex();
    } else if (index_->isFull()) {
      rebuildIndex();
    } else {
      index_->insert(bq::hashKey(key), static_cast<uint32_t>(pairs_.size() - 1));
    }
  }

  void remove(BQTypeRef key) {
    size_t position = index_ != nullptr ? takeFromIndex(key) : findPosition(key);
    if (position == kNowhere) return;
    bq::Pair removed = pairs_[position];
    if (index_ == nullptr) {
      pairs_.erase(pairs_.begin() + static_cast<std::ptrdiff_t>(position));
    } else {
      pairs_[position] = {nullptr, nullptr};
      ++removed_;
      for (; !pairs_.empty() && pairs_.back().key == nullptr; --removed_) pairs_.pop_back();
      if (removed_ > pairs_.size() / 2) rebuildIndex();
    }
    BQRelease(removed.key);
    BQRelease(removed.value);
  }

  void removeAll() {
    std::vector<bq::Pair> old;
    old.swap(pairs_);
    index_.reset();
    removed_ = 0;
    releasePairs(old);
  }

  template <class Function>
  void forEach(Function function) const {
    for (const bq::Pair& pair : pairs_) {
      if (pair.key != nullptr) function(pair.key, pair.value);
    }
  }

 private:
  static constexpr size_t kNowhere = SIZE_MAX;

  struct HasKey {
    const std::vector<bq::Pair>& pairs;
    BQTypeRef key;
    bool operator()(uint32_t entry) const { return bq::equalKeys(pairs[entry].key, key); }
  };

  size_t findPosition(BQTypeRef key) const {
    if (index_ != nullptr) return positionOf(index_->find(bq::hashKey(key), HasKey{pairs_, key}));
    for (size_t i = 0; i < pairs_.size(); ++i) {
      if (bq::equalKeys(pairs_[i].key, key)) return i;
    }
    return kNowhere;
  }

  size_t takeFromIndex(BQTypeRef key) {
    return positionOf(index_->remove(bq::hashKey(key), HasKey{pairs_, key}));
  }

  static size_t positionOf(uint32_t entry) { return entry == bq::HashIndex::kNone ? kNowhere : entry; }

  void rebuildIndex() {
    std::erase_if(pairs_, [](const bq::Pair& pair) { return pair.key == nullptr; });
    removed_ = 0;
    if (index_ == nullptr) index_ = std::make_unique<bq::HashIndex>();
    index_->reset(2 * pairs_.size());
    for (size_t i = 0; i < pairs_.size(); ++i)
      index_->insert(bq::hashKey(pairs_[i].key), static_cast<uint32_t>(i));
  }

  static void releasePairs(const std::vector<bq::Pair>& pairs) {
    for (const bq::Pair& pair : pairs) {
      BQRelease(pair.key);
      BQRelease(pair.value);
    }
  }

  std::vector<bq::Pair> pairs_;
  std::unique_ptr<bq::HashIndex> index_;
  size_t removed_ = 0;
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
  return makeObject<BQDictionary>(kDictionaryTypeID, flags, capacityHint(capacity));
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
