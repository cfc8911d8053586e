/* One call of a method. */
#ifndef VXSERVE_CALL_H
#define VXSERVE_CALL_H

#include <cstdint>
#include <string_view>
#include <vector>

#include <BQ/BQBase.h>

#include "common/Value.h"

namespace tools::vxserve {

class MethodTable;

/* The most seconds for which methods may have the reply to one request held back. */
inline constexpr double kMaximumDelay = 600;

/* What a method is given. The arguments are those of one of its signatures. */
struct Call {
  const MethodTable& methods;
  std::vector<Value> arguments;
  /* How long the reply is to be held back: nothing waits while a method runs. */
  double delay = 0;

  int32_t integer(size_t index) const;
  double real(size_t index) const;
  std::string_view text(size_t index) const;
  const BQArray* array(size_t index) const;
  const BQDictionary* structure(size_t index) const;

  /* Holds the reply back for that much longer. Throws Fault if that is not possible. */
  void hold(double seconds);
};

}  // namespace tools::vxserve

#endif
