#include "platform/runloop/TimerHeap.h"

#include <algorithm>

#include "platform/runloop/RunLoopTimer.h"

namespace bq {

namespace {

bool firesBefore(const BQRunLoopTimer& first, const BQRunLoopTimer& second) {
  if (first.nextFiring() != second.nextFiring()) return first.nextFiring() < second.nextFiring();
  return first.creationNumber() < second.creationNumber();
}

bool isBefore(const TimerEntry* first, const TimerEntry* second) {
  return firesBefore(*first->timer.get(), *second->timer.get());
}

}  // namespace

void TimerHeap::insert(TimerEntry& entry) {
  entries_.push_back(&entry);
  entry.position = entries_.size() - 1;
  settle(entry.position);
}

void TimerHeap::remove(TimerEntry& entry) {
  TimerEntry* last = entries_.back();
  entries_.pop_back();
  if (last == &entry) return;
  place(last, entry.position);
  settle(last->position);
}

Nanoseconds TimerHeap::earliest() const {
  return entries_.empty() ? kForever : entries_.front()->timer->nextFiring();
}

std::vector<Ref<BQRunLoopTimer>> TimerHeap::collectDue(Nanoseconds now) const {
  std::vector<Ref<BQRunLoopTimer>> due;
  /* An entry that is not due has none below it that is, so only due entries and their children are seen. */
  std::vector<size_t> unseen{0};
  while (!unseen.empty()) {
    const size_t position = unseen.back();
    unseen.pop_back();
    if (position >= entries_.size() || entries_[position]->timer->nextFiring() > now) continue;
    due.push_back(entries_[position]->timer);
    unseen.push_back(2 * position + 1);
    unseen.push_back(2 * position + 2);
  }
  std::sort(due.begin(), due.end(),
            [](const auto& first, const auto& second) { return firesBefore(*first.get(), *second.get()); });
  return due;
}

void TimerHeap::place(TimerEntry* entry, size_t position) {
  entries_[position] = entry;
  entry->position = position;
}

/* Moves the entry at a position up or down until the order holds again. */
void TimerHeap::settle(size_t position) {
  TimerEntry* entry = entries_[position];
  while (position > 0 && isBefore(entry, entries_[(position - 1) / 2])) {
    place(entries_[(position - 1) / 2], position);
    position = (position - 1) / 2;
  }
  for (;;) {
    size_t child = 2 * position + 1;
    if (child + 1 < entries_.size() && isBefore(entries_[child + 1], entries_[child])) ++child;
    if (child >= entries_.size() || !isBefore(entries_[child], entry)) break;
    place(entries_[child], position);
    position = child;
  }
  place(entry, position);
}

}  // namespace bq
