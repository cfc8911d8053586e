#include "platform/runloop/FileDescriptor.h"

#include <algorithm>
#include <utility>

#include "platform/runloop/RunLoop.h"
#include "platform/runloop/RunLoopMode.h"

namespace {

constexpr uint32_t kAllInterest = kBQFileDescriptorRead | kBQFileDescriptorWrite;

bool isDescriptor(const BQFileDescriptor* descriptor) {
  return bq::isInstance(descriptor, BQFileDescriptorGetTypeID());
}

}  // namespace

void BQFileDescriptor::setInterest(uint32_t interest) {
  if (interest == interest_) return;
  interest_ = interest;
  for (const auto& entry : entries_) entry->mode->descriptors.interestChanged(fd_);
}

void BQFileDescriptor::addTo(bq::RunLoopMode& mode) {
  if (!valid_) return;
  for (const auto& entry : entries_) {
    if (entry->mode == &mode || &entry->mode->loop != &mode.loop) return;
  }
  entries_.push_back(std::make_unique<bq::DescriptorEntry>(
      bq::DescriptorEntry{.descriptor = bq::Ref<BQFileDescriptor>::retain(this), .mode = &mode}));
  mode.descriptors.insert(*entries_.back());
}

std::unique_ptr<bq::DescriptorEntry> BQFileDescriptor::removeFrom(bq::RunLoopMode& mode) {
  for (auto& entry : entries_) {
    if (entry->mode != &mode) continue;
    mode.descriptors.erase(*entry);
    std::swap(entry, entries_.back());
    auto removed = std::move(entries_.back());
    entries_.pop_back();
    return removed;
  }
  return nullptr;
}

void BQFileDescriptor::invalidate() {
  valid_ = false;
  for (const auto& entry : entries_) entry->mode->descriptors.erase(*entry);
  /* The references that go here may be the last ones to the descriptor itself. */
  const auto removed = std::move(entries_);
}

BQTypeID BQFileDescriptorGetTypeID(void) {
  static const BQRuntimeClass descriptorClass = {
      .version = 0,
      .className = "BQFileDescriptor",
      .init = nullptr,
      .copy = nullptr,
      .finalize = bq::finalizeObject<BQFileDescriptor>,
      .equal = nullptr,
      .hash = nullptr,
      .copyFormattingDesc = nullptr,
      .copyDebugDesc = nullptr,
  };
  static const BQTypeID typeID = _BQRuntimeRegisterClass(&descriptorClass);
  return typeID;
}

BQFileDescriptor* BQFileDescriptorCreate(int fd, uint32_t interest, BQFileDescriptorCallBack callback,
                                         void* info) {
  if (fd < 0 || callback == nullptr) return nullptr;
  return bq::makeObject<BQFileDescriptor>(BQFileDescriptorGetTypeID(), fd, interest & kAllInterest, callback,
                                          info);
}

void BQFileDescriptorSetInterest(BQFileDescriptor* descriptor, uint32_t interest) {
  if (isDescriptor(descriptor)) descriptor->setInterest(interest & kAllInterest);
}

void BQFileDescriptorInvalidate(BQFileDescriptor* descriptor) {
  if (isDescriptor(descriptor)) descriptor->invalidate();
}

void BQRunLoopAddFileDescriptor(BQRunLoop* runLoop, BQFileDescriptor* descriptor, const BQString* mode) {
  if (!isDescriptor(descriptor)) return;
  if (bq::RunLoopMode* found = bq::findOrCreateMode(runLoop, mode)) descriptor->addTo(*found);
}

void BQRunLoopRemoveFileDescriptor(BQRunLoop* runLoop, BQFileDescriptor* descriptor, const BQString* mode) {
  if (!isDescriptor(descriptor)) return;
  if (bq::RunLoopMode* found = bq::findMode(runLoop, mode)) descriptor->removeFrom(*found);
}
