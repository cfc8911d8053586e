#include "api/MethodInvocationHandle.h"

#include <BQ/BQObject.h>
#include <BQ/BQString.h>
#include <BQ/BQURL.h>

const BQString* OpaqueVXMethodInvocationRef::_bqCopyDebugDesc(const void* object) {
  auto* handle = static_cast<VXMethodInvocationRef>(const_cast<void*>(object));
  vx::Owned<const BQString> url;
  const void* methodName = nullptr;
  if (handle != nullptr && handle->wrapped != nullptr) {
    url = vx::own(BQURLCopyDisplayString(handle->wrapped->getServiceURL()));
    methodName = handle->wrapped->getProperty(BQSTR("MethodName"));
  }
  return BQStringCreateWithFormat(BQSTR("VXMethodInvocation{%d} [%@] [%@]"),
                                  static_cast<int>(BQGetRetainCount(object)), url.get(), methodName);
}
