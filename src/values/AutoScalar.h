/* Holds a number, or any other single value. */
#ifndef VX_VALUES_AUTO_SCALAR_H
#define VX_VALUES_AUTO_SCALAR_H

#include "values/AutoCountable.h"

namespace vx {

class AutoScalar : public AutoCountable {
 public:
  /* Takes over the caller's reference; may be null. */
  explicit AutoScalar(const void* value) : value(value) {}
  /* New numbers of the number types 9, 3, 12 and 13. */
  explicit AutoScalar(int value);
  explicit AutoScalar(long value);
  explicit AutoScalar(float value);
  explicit AutoScalar(double value);
  AutoScalar(const AutoScalar&) = delete;
  ~AutoScalar() override;

  /* Never empty, also when it holds null. */
  bool isEmpty() const override { return false; }
  BQTypeRef getRef() override { return value; }

  /* The value as a number; 0 if it cannot be read so. */
  int toInt() const;
  float toFloat() const;
  double toDouble() const;

 private:
  BQTypeRef value;
};

}  // namespace vx

#endif
