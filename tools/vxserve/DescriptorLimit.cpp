#include "DescriptorLimit.h"

#include <algorithm>

#include <sys/resource.h>

namespace tools::vxserve {

unsigned raiseDescriptorLimit() {
  constexpr rlim_t kMost = 65536;
  constexpr rlim_t kForOtherFiles = 64;
  rlimit limit = {};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return 512;
  rlim_t wanted = std::min(limit.rlim_max, kMost);
  if (limit.rlim_cur < wanted) {
    rlimit raised = {wanted, limit.rlim_max};
    if (setrlimit(RLIMIT_NOFILE, &raised) == 0) limit = raised;
  }
  rlim_t usable = std::min(limit.rlim_cur, kMost);
  return static_cast<unsigned>(std::max(usable, 2 * kForOtherFiles) - kForOtherFiles);
}

}  // namespace tools::vxserve
