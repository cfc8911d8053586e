/* The handle of a method invocation. */
#ifndef VX_API_METHOD_INVOCATION_HANDLE_H
#define VX_API_METHOD_INVOCATION_HANDLE_H

#include <VX/VXMethodInvocation.h>

#include "api/CPlusBQObject.h"
#include "api/base/WebServiceMethodInvocation.h"

struct OpaqueVXMethodInvocationRef
    : vx::HandleOf<OpaqueVXMethodInvocationRef, vx::WebServiceMethodInvocation> {
  static constexpr const char* kClassName = "OpaqueVXMethodInvocationRef";
  static const BQString* _bqCopyDebugDesc(const void* object);
};

#endif
