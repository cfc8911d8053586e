/* Bytes that were received and not yet read. */
#ifndef BQ_HTTP_BYTE_QUEUE_H
#define BQ_HTTP_BYTE_QUEUE_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <algorithm>
#include <vector>

namespace bq {

class ByteQueue {
 public:
  size_t size() const { return bytes_.size() - first_; }
  bool empty() const { return size() == 0; }

  void append(const char* bytes, size_t count) {
    /* Moving what is left only when it is the smaller part keeps the cost of a byte constant. */
    if (first_ > bytes_.size() / 2) {
      bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<ptrdiff_t>(first_));
      first_ = 0;
    }
    bytes_.insert(bytes_.end(), bytes, bytes + count);
  }

  size_t take(uint8_t* buffer, size_t capacity) {
    size_t count = std::min(capacity, size());
    if (count > 0) std::memcpy(buffer, bytes_.data() + first_, count);
    first_ += count;
    if (empty()) clear();
    return count;
  }

  /* Keeps the memory. */
  void clear() {
    bytes_.clear();
    first_ = 0;
  }

 private:
  std::vector<char> bytes_;
  size_t first_ = 0;
};

}  // namespace bq

#endif
