/* Holds an array, which is copied when it is written to for the first time. */
#ifndef VX_VALUES_AUTO_ARRAY_H
#define VX_VALUES_AUTO_ARRAY_H

#include "values/AutoCountable.h"

namespace vx {

class AutoArray : public AutoCountable {
 public:
  /* A new mutable array. */
  AutoArray();
  /* Both take over the caller's reference; it may be null. */
  explicit AutoArray(BQArray* array) : mutableArray(array) {}
  explicit AutoArray(const BQArray* array) : immutableArray(array) {}
  AutoArray(const AutoArray&) = delete;
  ~AutoArray() override;

  bool isEmpty() const override { return getCount() == 0; }
  BQTypeRef getRef() override { return getMutableArray(); }

  /* The array for reading, borrowed: the shared empty array if there is none. */
  const BQArray* getImmutableArray() const;
  /* The array for writing, borrowed: a private copy of a shared one. */
  BQArray* getMutableArray();
  BQIndex getCount() const;
  /* Retains the value; null is ignored. */
  void appendValue(const void* value);
  void appendValue(AutoCountable& value) { appendValue(value.getRef()); }

  /* The one empty array that stands in for a missing one; nobody writes to it. */
  static const BQArray* emptyArray();

 private:
  static BQArray* sEmptyArray;

  BQArray* mutableArray = nullptr;
  const BQArray* immutableArray = nullptr;
};

}  // namespace vx

#endif
