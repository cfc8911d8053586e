/* The handle of a protocol handler. */
#ifndef VX_API_PROTOCOL_HANDLER_HANDLE_H
#define VX_API_PROTOCOL_HANDLER_HANDLE_H

#include <BQ/BQRuntime.h>
#include <VX/VXProtocolHandler.h>

#include "api/CPlusBQObject.h"
#include "api/base/VXProtocolHandler.h"

struct OpaqueVXProtocolHandlerRef : vx::CPlusBQObject {
  /* Takes over the handler and becomes its owner. */
  explicit OpaqueVXProtocolHandlerRef(vx::VXProtocolHandler* wrapped);

  /* A handle for a handler, owned by the caller; null, with the handler destroyed, if none can be made. */
  static VXProtocolHandlerRef wrap(vx::VXProtocolHandler* wrapped);
  static BQTypeID typeID();

  BQRuntimeBase header;
  vx::VXProtocolHandler* handler;

 private:
  static void _bqDealloc(const void* object);
  static const BQString* _bqCopyDebugDesc(const void* object);

  static const BQRuntimeClass sRT;
  static BQTypeID sID;
};

#endif
