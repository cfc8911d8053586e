/* A holder of a reference, for C++. In C this header is empty. */
#ifndef BQ_REF_H
#define BQ_REF_H

#include <BQ/BQObject.h>

#ifdef __cplusplus
/* Whoever includes a C header between the brackets of extern "C" may get here through it. */
extern "C++" {

/**
 * Owns one reference to an object, or none, and releases it in the end. A copy has a reference of
 * its own. `T` is what a pointer to the object points to: `BQRef<const BQString>`, `BQRef<BQArray>`,
 * or `BQRef<const void>` for an object of any class. One holder is used by one thread at a time.
 *
 *     BQRef<const BQURL> url = BQAdopt(BQURLCreateWithString(text, nullptr));
 *     BQRef<const void> value = BQRef<const void>::retain(BQDictionaryGetValue(result, key));
 */
template <class T>
class BQRef {
 public:
  /** Holds nothing. */
  BQRef() noexcept = default;

  /** Holds nothing: what a function gives that has no object to give. */
  BQRef(decltype(nullptr)) noexcept {}

  /** Takes over a reference, as a *Create* or *Copy* function gives it. Null holds nothing. */
  static BQRef adopt(T* object) noexcept {
    BQRef ref;
    ref.object_ = object;
    return ref;
  }

  /** Adds a reference to an object that is borrowed, as from a *Get* function. Null holds nothing. */
  static BQRef retain(T* object) noexcept {
    BQRetain(object);
    return adopt(object);
  }

  /** Adds a reference. */
  BQRef(const BQRef& other) noexcept : object_(other.object_) { BQRetain(object_); }

  /** Takes the reference of the other holder, which holds nothing from then on. */
  BQRef(BQRef&& other) noexcept : object_(other.release()) {}

  /** The same between types whose pointers convert: a mutable object becomes one that is not changed. */
  template <class U, class = decltype(BQRef::adopt(static_cast<U*>(nullptr)))>
  BQRef(BQRef<U> other) noexcept : object_(other.release()) {}

  /** Gives up what it holds for what the other one holds. */
  BQRef& operator=(BQRef other) noexcept {
    T* former = object_;
    object_ = other.object_;
    other.object_ = former;
    return *this;
  }

  /** Releases what it holds. */
  ~BQRef() {
    if (object_ != nullptr) BQRelease(object_);
  }

  /** The object, borrowed; null if there is none. */
  T* get() const noexcept { return object_; }

  /** The same, for classes whose members are known. */
  T* operator->() const noexcept { return object_; }

  /** Whether there is an object. */
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /** Whether there is no object. */
  friend bool operator==(const BQRef& ref, decltype(nullptr)) noexcept { return ref.object_ == nullptr; }

  /** Whether there is an object. */
  friend bool operator!=(const BQRef& ref, decltype(nullptr)) noexcept { return ref.object_ != nullptr; }

  /** Gives the reference to the caller, who has to release it, and holds nothing from then on. */
  [[nodiscard]] T* release() noexcept {
    T* object = object_;
    object_ = nullptr;
    return object;
  }

 private:
  T* object_ = nullptr;
};

/** A holder that takes over a reference, as a *Create* or *Copy* function gives it. */
template <class T>
BQRef<T> BQAdopt(T* object) noexcept {
  return BQRef<T>::adopt(object);
}

}  // extern "C++"
#endif

#endif
