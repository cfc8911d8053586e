#include "transport/VXRunLoopSource.h"

#include <BQ/BQString.h>

namespace vx {

VXRunLoopSource::VXRunLoopSource()
    : context{0, this, _retain, _release, _copyDescription, _equal, _hash, _schedule, _cancel, _perform} {}

void VXRunLoopSource::retire() {
  BQRunLoopSourceInvalidate(source.get());
  if (entries_ == 0) {
    delete this;
  } else {
    retired_ = true;
  }
}

const BQString* VXRunLoopSource::description() {
  return BQSTR("VXRunLoopSource::copyDescription");
}

void VXRunLoopSource::schedule(BQRunLoop*, const BQString*) {}

void VXRunLoopSource::cancel(BQRunLoop*, const BQString*) {}

BQRunLoopSource* VXRunLoopSource::getSourceCreatingIfNecessary() {
  if (source == nullptr) source = own(BQRunLoopSourceCreate(0, &context));
  return source.get();
}

bool VXRunLoopSource::addToRunLoop(BQRunLoop* runLoop, const BQString* mode) {
  BQRunLoopAddSource(runLoop, getSourceCreatingIfNecessary(), mode);
  return true;
}

bool VXRunLoopSource::isIn(BQRunLoop* runLoop, const BQString* mode) const {
  return BQRunLoopContainsSource(runLoop, source.get(), mode);
}

bool VXRunLoopSource::removeFromRunLoop(BQRunLoop* runLoop, const BQString* mode) {
  if (source != nullptr) BQRunLoopRemoveSource(runLoop, source.get(), mode);
  return true;
}

/* The platform holds no reference on the object: its owner invalidates the source in time. */
const void* VXRunLoopSource::_retain(const void* info) {
  return info;
}

void VXRunLoopSource::_release(const void*) {}

const BQString* VXRunLoopSource::_copyDescription(const void* info) {
  return static_cast<VXRunLoopSource*>(const_cast<void*>(info))->description();
}

bool VXRunLoopSource::_equal(const void* first, const void* second) {
  return first == second;
}

BQHashCode VXRunLoopSource::_hash(const void* info) {
  return reinterpret_cast<BQHashCode>(info);
}

void VXRunLoopSource::_schedule(void* info, BQRunLoop* runLoop, const BQString* mode) {
  static_cast<VXRunLoopSource*>(info)->schedule(runLoop, mode);
}

void VXRunLoopSource::_cancel(void* info, BQRunLoop* runLoop, const BQString* mode) {
  static_cast<VXRunLoopSource*>(info)->cancel(runLoop, mode);
}

/*
 * An override or a callback may run the loop again. The step that called it is not finished then, and goes on
 * when it returns.
 */
void VXRunLoopSource::_perform(void* info) {
  auto* object = static_cast<VXRunLoopSource*>(info);
  if (object->isActive()) return;
  Entry entry(object);
  object->perform();
}

}  // namespace vx
