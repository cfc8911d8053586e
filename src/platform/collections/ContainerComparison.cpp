#include "platform/collections/ContainerComparison.h"

#include <functional>
#include <unordered_map>
#include <utility>

#include "platform/object/Object.h"

namespace bq {
namespace {

using Pair = std::pair<BQTypeRef, BQTypeRef>;

struct PairHash {
  size_t operator()(const Pair& pair) const {
    auto first = reinterpret_cast<uintptr_t>(pair.first), second = reinterpret_cast<uintptr_t>(pair.second);
    return std::hash<uintptr_t>()((first >> 4) * 0x9E3779B97F4A7C15u ^ second);
  }
};

/*
 * One comparison with all that it leads to. Trees, which are the rule, are compared without a memory
 * of what was compared; so many pairs at once suggest that the same ones come again and again.
 */
class Comparison {
 public:
  bool compare(BQTypeRef first, BQTypeRef second, bool (*equalContents)(BQTypeRef, BQTypeRef)) {
    if (depth_ == kMaximumDepth) return false;
    if (count_ >= kPairsWithoutMemory) return compareOnce(first, second, equalContents);
    ++count_;
    return descend(first, second, equalContents);
  }

 private:
  static constexpr size_t kPairsWithoutMemory = 20000;

  bool descend(BQTypeRef first, BQTypeRef second, bool (*equalContents)(BQTypeRef, BQTypeRef)) {
    ++depth_;
    bool equal = equalContents(first, second);
    if (--depth_ == 0) {
      count_ = 0;
      delete std::exchange(known_, nullptr);
    }
    return equal;
  }

  /* A pair that is met inside itself would lead on beyond every depth, and so is not equal. */
  bool compareOnce(BQTypeRef first, BQTypeRef second, bool (*equalContents)(BQTypeRef, BQTypeRef)) {
    if (known_ == nullptr) known_ = new Known;
    auto [entry, isNew] = known_->try_emplace({first, second}, false);
    bool& equal = entry->second;
    if (isNew) equal = descend(first, second, equalContents);
    return equal;
  }

  using Known = std::unordered_map<Pair, bool, PairHash>;

  int depth_ = 0;
  size_t count_ = 0;
  Known* known_ = nullptr; /* gone when the outermost pair is compared */
};

}  // namespace

bool compareContainers(BQTypeRef first, BQTypeRef second, bool (*equalContents)(BQTypeRef, BQTypeRef)) {
  static constinit thread_local Comparison comparison;
  return comparison.compare(first, second, equalContents);
}

}  // namespace bq
