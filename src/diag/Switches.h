/* The debug switches, which come from the environment. */
#ifndef VX_DIAG_SWITCHES_H
#define VX_DIAG_SWITCHES_H

#include <cstdint>

namespace vx {

/* 1 when the environment variable "VXDebug" is present, whatever its value. */
extern int32_t gVXDebug;
/* 1 when "VXDebugVerbose" is present. */
extern int32_t gVXDebugVerbose;

/* Reads the switches, the first time it is called. Every create function calls it. */
void vxInitStatics();

}  // namespace vx

#endif
