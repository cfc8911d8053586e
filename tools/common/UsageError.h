/* A command line that cannot be carried out. */
#ifndef TOOLS_USAGE_ERROR_H
#define TOOLS_USAGE_ERROR_H

#include <stdexcept>

namespace tools {

/* Says in one sentence what is wrong with the command line. */
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tools

#endif
