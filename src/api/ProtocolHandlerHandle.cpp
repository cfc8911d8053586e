#include "api/ProtocolHandlerHandle.h"

#include <BQ/BQObject.h>
#include <BQ/BQString.h>

const BQRuntimeClass OpaqueVXProtocolHandlerRef::sRT = {0,
                                                        "OpaqueVXProtocolHandlerRef",
                                                        nullptr,
                                                        nullptr,
                                                        _bqDealloc,
                                                        nullptr,
                                                        nullptr,
                                                        nullptr,
                                                        _bqCopyDebugDesc};
BQTypeID OpaqueVXProtocolHandlerRef::sID;

OpaqueVXProtocolHandlerRef::OpaqueVXProtocolHandlerRef(vx::VXProtocolHandler* wrapped) : handler(wrapped) {
  handler->setOwner(this);
}

BQTypeID OpaqueVXProtocolHandlerRef::typeID() {
  return ensureTypeID(&sRT, &sID);
}

VXProtocolHandlerRef OpaqueVXProtocolHandlerRef::wrap(vx::VXProtocolHandler* wrapped) {
  auto* handle = new (typeID()) OpaqueVXProtocolHandlerRef(wrapped);
  if (handle == nullptr) delete wrapped;
  return handle;
}

void OpaqueVXProtocolHandlerRef::_bqDealloc(const void* object) {
  auto* handle = static_cast<VXProtocolHandlerRef>(const_cast<void*>(object));
  if (handle == nullptr || handle->handler == nullptr) return;
  handle->handler->setOwner(nullptr);
  delete handle->handler;
  handle->handler = nullptr;
}

const BQString* OpaqueVXProtocolHandlerRef::_bqCopyDebugDesc(const void* object) {
  return BQStringCreateWithFormat(BQSTR("OpaqueVXProtocolHandlerRef{%d}"),
                                  static_cast<int>(BQGetRetainCount(object)));
}
