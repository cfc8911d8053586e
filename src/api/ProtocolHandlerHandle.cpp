#include "api/ProtocolHandlerHandle.h"

#include <BQ/BQObject.h>
#include <BQ/BQString.h>

const BQString* OpaqueVXProtocolHandlerRef::_bqCopyDebugDesc(const void* object) {
  return BQStringCreateWithFormat(BQSTR("OpaqueVXProtocolHandlerRef{%d}"),
                                  static_cast<int>(BQGetRetainCount(object)));
}
