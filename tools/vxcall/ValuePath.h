/* How a place within a value is named: "result.items[3]". */
#ifndef VXCALL_VALUE_PATH_H
#define VXCALL_VALUE_PATH_H

#include <string>
#include <string_view>

#include <BQ/BQBase.h>

namespace tools::vxcall {

/* A step into an array or a dictionary, which knows the steps before it; made on the way, and rarely named.
 */
struct ValuePath {
  const ValuePath* outer = nullptr;
  /* What the whole value is called, or a key; borrowed. */
  std::string_view name;
  /* In an array; -1 otherwise. */
  BQIndex index = -1;

  std::string text() const;
};

}  // namespace tools::vxcall

#endif
