#include "platform/runloop/RunLoopSource.h"

#include <functional>
#include <utility>

#include "platform/runloop/ContextDescription.h"
#include "platform/runloop/RunLoop.h"
#include "platform/runloop/RunLoopMode.h"

/* What a removal leaves to be done without the lock. */
struct BQRunLoopSource::Removal {
  explicit Removal(std::unique_ptr<bq::SourceEntry> removed)
      : entry(std::move(removed)),
        loop(bq::Ref<BQRunLoop>::retain(&entry->mode->loop)),
        mode(entry->mode->name) {}

  std::unique_ptr<bq::SourceEntry> entry;
  bq::Ref<BQRunLoop> loop;
  bq::Ref<const BQString> mode;
};

BQRunLoopSource::BQRunLoopSource(BQTypeID typeID, BQIndex order, const BQRunLoopSourceContext& context)
    : Object(typeID), order_(order), context_(context) {
  if (context_.retain != nullptr) context_.info = const_cast<void*>(context_.retain(context_.info));
}

BQRunLoopSource::~BQRunLoopSource() {
  if (context_.release != nullptr) context_.release(context_.info);
}

void BQRunLoopSource::signal() {
  /* Several signals before a perform count as one. */
  if (signalled_.exchange(true, std::memory_order_acq_rel)) return;
  const std::lock_guard lock(mutex_);
  queueEntries();
}

void BQRunLoopSource::queueEntries() {
  for (const auto& entry : entries_) entry->mode->loop.queueSource(*entry);
}

void BQRunLoopSource::addTo(bq::RunLoopMode& mode) {
  const bq::Ref<const BQString> name = mode.name;
  const auto loop = bq::Ref<BQRunLoop>::retain(&mode.loop);
  {
    const std::lock_guard lock(mutex_);
    if (!isValid() || findEntry(mode) != nullptr) return;
    entries_.push_back(std::make_unique<bq::SourceEntry>(
        bq::SourceEntry{.source = bq::Ref<BQRunLoopSource>::retain(this), .mode = &mode}));
    loop->insertSource(*entries_.back());
    if (signalled_.load(std::memory_order_acquire)) loop->queueSource(*entries_.back());
  }
  if (context_.schedule != nullptr) context_.schedule(context_.info, loop.get(), name.get());
}

void BQRunLoopSource::removeFrom(bq::RunLoopMode& mode) {
  std::unique_lock lock(mutex_);
  for (size_t index = 0; index < entries_.size(); ++index) {
    if (entries_[index]->mode != &mode) continue;
    const Removal removal(takeEntry(index));
    lock.unlock();
    cancel(removal);
    return;
  }
}

std::unique_ptr<bq::SourceEntry> BQRunLoopSource::abandon(bq::RunLoopMode& mode) {
  const std::lock_guard lock(mutex_);
  for (size_t index = 0; index < entries_.size(); ++index) {
    if (entries_[index]->mode == &mode) return takeEntry(index);
  }
  return nullptr;
}

void BQRunLoopSource::invalidate() {
  std::vector<Removal> removals;
  {
    const std::lock_guard lock(mutex_);
    if (!valid_.exchange(false, std::memory_order_acq_rel)) return;
    while (!entries_.empty()) removals.emplace_back(takeEntry(entries_.size() - 1));
  }
  for (const Removal& removal : removals) cancel(removal);
}

bool BQRunLoopSource::isIn(const bq::RunLoopMode& mode) const {
  const std::lock_guard lock(mutex_);
  return findEntry(mode) != nullptr;
}

bool BQRunLoopSource::perform(bq::RunLoopMode& mode, uint64_t signalNumber) {
  if (!takeSignal(mode, signalNumber)) return false;
  if (context_.perform != nullptr) context_.perform(context_.info);
  const std::lock_guard lock(mutex_);
  performing_ = false;
  if (signalled_.load(std::memory_order_acquire)) queueEntries();
  return true;
}

bq::SourceEntry* BQRunLoopSource::findEntry(const bq::RunLoopMode& mode) const {
  for (const auto& entry : entries_) {
    if (entry->mode == &mode) return entry.get();
  }
  return nullptr;
}

std::unique_ptr<bq::SourceEntry> BQRunLoopSource::takeEntry(size_t index) {
  std::swap(entries_[index], entries_.back());
  std::unique_ptr<bq::SourceEntry> entry = std::move(entries_.back());
  entries_.pop_back();
  entry->mode->loop.eraseSource(*entry);
  return entry;
}

/*
 * A source in several modes is queued in each, but its signal is one: it belongs to whoever takes it
 * first. It is taken after the entry has left the queue, so that a signal given in between is either
 * this one or queues the entry anew. A source that is being performed keeps its signal, out of the queue so
 * that a run inside that perform can sleep; the entries are queued again when the perform is done.
 */
bool BQRunLoopSource::takeSignal(bq::RunLoopMode& mode, uint64_t signalNumber) {
  const std::lock_guard lock(mutex_);
  bq::SourceEntry* entry = findEntry(mode);
  if (entry == nullptr || !mode.loop.unqueueSource(*entry, signalNumber)) return false;
  if (performing_ || !signalled_.exchange(false, std::memory_order_acq_rel)) return false;
  performing_ = true;
  return true;
}

void BQRunLoopSource::cancel(const Removal& removal) {
  if (context_.cancel != nullptr) context_.cancel(context_.info, removal.loop.get(), removal.mode.get());
}

const BQString* BQRunLoopSource::copyDescription() const {
  return bq::copyContextDescription("BQRunLoopSource", this, context_.copyDescription, context_.info);
}

bool BQRunLoopSource::equals(const BQRunLoopSource& other) const {
  if (this == &other) return true;
  return context_.equal != nullptr && context_.equal == other.context_.equal && order_ == other.order_ &&
         context_.perform == other.context_.perform && context_.equal(context_.info, other.context_.info);
}

BQHashCode BQRunLoopSource::hash() const {
  if (context_.equal == nullptr) return std::hash<const void*>()(this);
  return context_.hash != nullptr ? context_.hash(context_.info) : static_cast<BQHashCode>(order_);
}

namespace {

const BQRunLoopSource* asSource(BQTypeRef object) {
  return static_cast<const BQRunLoopSource*>(object);
}

bool isSource(const BQRunLoopSource* source) {
  return bq::isInstance(source, BQRunLoopSourceGetTypeID());
}

bool sourcesAreEqual(BQTypeRef first, BQTypeRef second) {
  return asSource(first)->equals(*asSource(second));
}

BQHashCode hashSource(BQTypeRef object) {
  return asSource(object)->hash();
}

const BQString* copySourceDescription(BQTypeRef object) {
  return asSource(object)->copyDescription();
}

}  // namespace

BQTypeID BQRunLoopSourceGetTypeID(void) {
  static const BQRuntimeClass sourceClass = {
      .version = 0,
      .className = "BQRunLoopSource",
      .init = nullptr,
      .copy = nullptr,
      .finalize = bq::finalizeObject<BQRunLoopSource>,
      .equal = sourcesAreEqual,
      .hash = hashSource,
      .copyFormattingDesc = nullptr,
      .copyDebugDesc = copySourceDescription,
  };
  static const BQTypeID typeID = _BQRuntimeRegisterClass(&sourceClass);
  return typeID;
}

BQRunLoopSource* BQRunLoopSourceCreate(BQIndex order, const BQRunLoopSourceContext* context) {
  if (context == nullptr || context->version != 0) return nullptr;
  return bq::makeObject<BQRunLoopSource>(BQRunLoopSourceGetTypeID(), order, *context);
}

void BQRunLoopSourceSignal(BQRunLoopSource* source) {
  if (isSource(source)) source->signal();
}

void BQRunLoopSourceInvalidate(BQRunLoopSource* source) {
  if (isSource(source)) source->invalidate();
}

bool BQRunLoopSourceIsValid(const BQRunLoopSource* source) {
  return isSource(source) && source->isValid();
}

void BQRunLoopAddSource(BQRunLoop* runLoop, BQRunLoopSource* source, const BQString* mode) {
  if (!isSource(source) || !source->isValid()) return;
  if (bq::RunLoopMode* found = bq::findOrCreateMode(runLoop, mode)) source->addTo(*found);
}

void BQRunLoopRemoveSource(BQRunLoop* runLoop, BQRunLoopSource* source, const BQString* mode) {
  if (!isSource(source)) return;
  if (bq::RunLoopMode* found = bq::findMode(runLoop, mode)) source->removeFrom(*found);
}

bool BQRunLoopContainsSource(BQRunLoop* runLoop, BQRunLoopSource* source, const BQString* mode) {
  if (!isSource(source)) return false;
  const bq::RunLoopMode* found = bq::findMode(runLoop, mode);
  return found != nullptr && source->isIn(*found);
}
