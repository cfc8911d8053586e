#include "api/MethodInvocationHandle.h"

#include <BQ/BQObject.h>
#include <BQ/BQString.h>

const BQString* OpaqueVXMethodInvocationRef::_bqCopyDebugDesc(const void* object) {
  auto* handle = static_cast<VXMethodInvocationRef>(const_cast<void*>(object));
  const void* url = nullptr;
  const void* methodName = nullptr;
  if (handle != nullptr && handle->wrapped != nullptr) {
    url = handle->wrapped->getServiceURL();
    methodName = handle->wrapped->getProperty(BQSTR("MethodName"));
  }
  return BQStringCreateWithFormat(BQSTR("VXMethodInvocation{%d} [%@] [%@]"),
                                  static_cast<int>(BQGetRetainCount(object)), url, methodName);
}
