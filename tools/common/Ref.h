/* A counted reference to an object of the library. */
#ifndef TOOLS_REF_H
#define TOOLS_REF_H

#include <utility>

#include <BQ/BQObject.h>

namespace tools {

/* Owns one reference, or none. T is the pointee: Ref<const BQString>, Ref<const void>. */
template <typename T>
class Ref {
 public:
  Ref() = default;

  /* Takes over a reference, as from a Create or Copy function. */
  static Ref adopt(T* object) {
    Ref ref;
    ref.object_ = object;
    return ref;
  }

  /* Adds a reference, as to what a Get function lent. */
  static Ref retain(T* object) {
    BQRetain(object);
    return adopt(object);
  }

  Ref(const Ref& other) : object_(other.object_) { BQRetain(object_); }
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Ref() { BQRelease(object_); }

  T* get() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  T* object_ = nullptr;
};

using Value = Ref<const void>;

}  // namespace tools

#endif
