#include "platform/runloop/SourceSet.h"

#include "platform/runloop/RunLoopSource.h"

namespace bq {

namespace {

/* Both lists are unordered, and each entry knows its places: changes cost the same however many there are. */
void append(std::vector<SourceEntry*>& entries, SourceEntry& entry, size_t SourceEntry::*position) {
  entry.*position = entries.size();
  entries.push_back(&entry);
}

void remove(std::vector<SourceEntry*>& entries, SourceEntry& entry, size_t SourceEntry::*position) {
  SourceEntry* last = entries.back();
  entries[entry.*position] = last;
  last->*position = entry.*position;
  entries.pop_back();
  entry.*position = SourceEntry::kNowhere;
}

}  // namespace

void SourceSet::insert(SourceEntry& entry) {
  append(members_, entry, &SourceEntry::memberPosition);
}

void SourceSet::erase(SourceEntry& entry) {
  unqueue(entry);
  remove(members_, entry, &SourceEntry::memberPosition);
}

void SourceSet::queue(SourceEntry& entry, uint64_t signalNumber) {
  if (entry.pendingPosition != SourceEntry::kNowhere) return;
  entry.signalNumber = signalNumber;
  append(pending_, entry, &SourceEntry::pendingPosition);
}

bool SourceSet::unqueue(SourceEntry& entry) {
  if (entry.pendingPosition == SourceEntry::kNowhere) return false;
  remove(pending_, entry, &SourceEntry::pendingPosition);
  return true;
}

void SourceSet::collectPending(std::vector<PendingSignal>& signals) const {
  signals.reserve(signals.size() + pending_.size());
  for (const SourceEntry* entry : pending_) {
    signals.push_back({entry->source->order(), entry->signalNumber, entry->source});
  }
}

}  // namespace bq
