/* The handle of a method invocation. */
#ifndef VX_API_METHOD_INVOCATION_HANDLE_H
#define VX_API_METHOD_INVOCATION_HANDLE_H

#include <BQ/BQRuntime.h>
#include <VX/VXMethodInvocation.h>

#include "api/CPlusBQObject.h"
#include "api/base/WebServiceMethodInvocation.h"

struct OpaqueVXMethodInvocationRef : vx::CPlusBQObject {
  /* Takes over the invocation and becomes its owner. */
  explicit OpaqueVXMethodInvocationRef(vx::WebServiceMethodInvocation* wrapped);

  /* A handle for an invocation, owned by the caller; null, with the invocation destroyed, if none can be
   * made. */
  static VXMethodInvocationRef wrap(vx::WebServiceMethodInvocation* wrapped);
  static BQTypeID typeID();

  BQRuntimeBase header;
  vx::WebServiceMethodInvocation* invocation;

 private:
  static void _bqDealloc(const void* object);
  static const BQString* _bqCopyDebugDesc(const void* object);

  static const BQRuntimeClass sRT;
  static BQTypeID sID;
};

#endif
