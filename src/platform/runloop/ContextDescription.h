/* How sources and timers describe themselves: class, address, and what their context says. */
#ifndef BQ_RUNLOOP_CONTEXT_DESCRIPTION_H
#define BQ_RUNLOOP_CONTEXT_DESCRIPTION_H

#include <BQ/BQObject.h>
#include <BQ/BQString.h>

#include "platform/object/Object.h"

namespace bq {

inline const BQString* copyContextDescription(const char* className, const void* object,
                                              const BQString* (*copyDescription)(const void*),
                                              const void* info) {
  const auto text = Ref<const BQString>::adopt(copyDescription != nullptr ? copyDescription(info) : nullptr);
  if (!text) return BQStringCreateWithFormat(BQSTR("<%s %p>"), className, object);
  return BQStringCreateWithFormat(BQSTR("<%s %p {%@}>"), className, object, text.get());
}

}  // namespace bq

#endif
