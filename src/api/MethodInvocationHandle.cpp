#include "api/MethodInvocationHandle.h"

#include <BQ/BQObject.h>
#include <BQ/BQString.h>

const BQRuntimeClass OpaqueVXMethodInvocationRef::sRT = {0,
                                                         "OpaqueVXMethodInvocationRef",
                                                         nullptr,
                                                         nullptr,
                                                         _bqDealloc,
                                                         nullptr,
                                                         nullptr,
                                                         nullptr,
                                                         _bqCopyDebugDesc};
BQTypeID OpaqueVXMethodInvocationRef::sID;

OpaqueVXMethodInvocationRef::OpaqueVXMethodInvocationRef(vx::WebServiceMethodInvocation* wrapped)
    : invocation(wrapped) {
  invocation->setOwner(this);
}

BQTypeID OpaqueVXMethodInvocationRef::typeID() {
  return ensureTypeID(&sRT, &sID);
}

VXMethodInvocationRef OpaqueVXMethodInvocationRef::wrap(vx::WebServiceMethodInvocation* wrapped) {
  auto* handle = new (typeID()) OpaqueVXMethodInvocationRef(wrapped);
  if (handle == nullptr) delete wrapped;
  return handle;
}

void OpaqueVXMethodInvocationRef::_bqDealloc(const void* object) {
  auto* handle = static_cast<VXMethodInvocationRef>(const_cast<void*>(object));
  if (handle == nullptr || handle->invocation == nullptr) return;
  handle->invocation->setOwner(nullptr);
  delete handle->invocation;
  handle->invocation = nullptr;
}

const BQString* OpaqueVXMethodInvocationRef::_bqCopyDebugDesc(const void* object) {
  auto* handle = static_cast<VXMethodInvocationRef>(const_cast<void*>(object));
  const void* url = nullptr;
  const void* methodName = nullptr;
  if (handle != nullptr && handle->invocation != nullptr) {
    url = handle->invocation->getServiceURL();
    methodName = handle->invocation->getProperty(BQSTR("MethodName"));
  }
  return BQStringCreateWithFormat(BQSTR("VXMethodInvocation{%d} [%@] [%@]"),
                                  static_cast<int>(BQGetRetainCount(object)), url, methodName);
}
