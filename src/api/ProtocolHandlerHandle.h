/* The handle of a protocol handler. */
#ifndef VX_API_PROTOCOL_HANDLER_HANDLE_H
#define VX_API_PROTOCOL_HANDLER_HANDLE_H

#include <VX/VXProtocolHandler.h>

#include "api/CPlusBQObject.h"
#include "api/base/VXProtocolHandler.h"

struct OpaqueVXProtocolHandlerRef : vx::HandleOf<OpaqueVXProtocolHandlerRef, vx::VXProtocolHandler> {
  static constexpr const char* kClassName = "OpaqueVXProtocolHandlerRef";
  static const BQString* _bqCopyDebugDesc(const void* object);
};

#endif
