/* A value of any class. */
#ifndef TOOLS_VALUE_H
#define TOOLS_VALUE_H

#include <BQ/BQRef.h>

namespace tools {

using Value = BQRef<const void>;

}  // namespace tools

#endif
