#include "diag/Switches.h"

#include <cstdlib>

namespace vx {

int32_t gVXDebug;
int32_t gVXDebugVerbose;

void vxInitStatics() {
  static const bool didInit = [] {
    gVXDebug = std::getenv("VXDebug") != nullptr ? 1 : 0;
    gVXDebugVerbose = std::getenv("VXDebugVerbose") != nullptr ? 1 : 0;
    return true;
  }();
  static_cast<void>(didInit);
}

}  // namespace vx
