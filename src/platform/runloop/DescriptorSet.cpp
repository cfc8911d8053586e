#include "platform/runloop/DescriptorSet.h"

#include <errno.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "platform/object/ForkCount.h"
#include "platform/runloop/FileDescriptor.h"

namespace bq {

namespace {

constexpr uint32_t kReadEvents = EPOLLIN;
constexpr uint32_t kWriteEvents = EPOLLOUT;
constexpr uint32_t kEndEvents = EPOLLERR | EPOLLHUP;

/* No watch has this number. */
constexpr uint32_t kWakeUpNumber = 0;

/* Reading or writing reports an end or an error, so both count as ready for either. */
uint32_t readinessOf(uint32_t events) {
  uint32_t ready = 0;
  if ((events & (kReadEvents | kEndEvents)) != 0) ready |= kBQFileDescriptorRead;
  if ((events & (kWriteEvents | kEndEvents)) != 0) ready |= kBQFileDescriptorWrite;
  return ready;
}

uint64_t packEventData(int fd, uint32_t number) {
  return static_cast<uint64_t>(number) << 32 | static_cast<uint32_t>(fd);
}

/* Rounded up: waking before the time would make the loop turn in vain. */
int millisecondsOf(Nanoseconds timeout) {
  constexpr Nanoseconds kPerMillisecond = 1'000'000;
  if (timeout == kForever) return -1;
  const Nanoseconds milliseconds = timeout / kPerMillisecond + (timeout % kPerMillisecond != 0);
  return static_cast<int>(std::min<Nanoseconds>(milliseconds, std::numeric_limits<int>::max()));
}

}  // namespace

uint32_t DescriptorSet::Watch::wantedEvents() const {
  uint32_t events = 0;
  for (const DescriptorEntry* entry : entries) {
    const uint32_t interest = entry->descriptor->interest();
    if ((interest & kBQFileDescriptorRead) != 0) events |= kReadEvents;
    if ((interest & kBQFileDescriptorWrite) != 0) events |= kWriteEvents;
  }
  return events;
}

DescriptorSet::~DescriptorSet() {
  close();
}

void DescriptorSet::close() {
  if (epoll_ >= 0) ::close(epoll_);
  epoll_ = -1;
}

void DescriptorSet::insert(DescriptorEntry& entry) {
  const int fd = entry.descriptor->fd();
  Watch& watch = watches_[fd];
  if (watch.number == 0) watch.number = ++lastWatchNumber_;
  watch.entries.push_back(&entry);
  interestChanged(fd);
}

void DescriptorSet::erase(DescriptorEntry& entry) {
  const int fd = entry.descriptor->fd();
  const auto found = watches_.find(fd);
  Watch& watch = found->second;
  std::erase(watch.entries, &entry);
  if (!watch.entries.empty()) {
    interestChanged(fd);
    return;
  }
  waiting_ -= watch.isWaiting;
  dropRegistration(fd, watch);
  if (watch.isChanged) std::erase(changed_, fd);
  watches_.erase(found);
}

void DescriptorSet::interestChanged(int fd) {
  Watch& watch = watches_[fd];
  const bool isWaiting = watch.wantedEvents() != 0;
  waiting_ += isWaiting;
  waiting_ -= std::exchange(watch.isWaiting, isWaiting);
  if (watch.isChanged) return;
  watch.isChanged = true;
  changed_.push_back(fd);
}

bool DescriptorSet::isOpen() const {
  return epoll_ >= 0 && forks_ == forkCount();
}

bool DescriptorSet::open(int wakeUp) {
  if (isOpen()) return true;
  if (wakeUp < 0) return false;
  close();
  forgetRegistrations();
  epoll_ = epoll_create1(EPOLL_CLOEXEC);
  if (epoll_ < 0) return false;
  forks_ = forkCount();
  epoll_event event = {.events = EPOLLIN, .data = {.u64 = packEventData(wakeUp, kWakeUpNumber)}};
  if (epoll_ctl(epoll_, EPOLL_CTL_ADD, wakeUp, &event) == 0) return true;
  close();
  return false;
}

void DescriptorSet::forgetRegistrations() {
  for (auto& [fd, watch] : watches_) {
    watch.registered = 0;
    if (!std::exchange(watch.isChanged, true)) changed_.push_back(fd);
  }
}

void DescriptorSet::registerChanges() {
  for (const int fd : changed_) {
    Watch& watch = watches_[fd];
    watch.isChanged = false;
    registerWatch(fd, watch);
  }
  changed_.clear();
}

/*
 * A watch that loses its interest stays registered until it is reported, because the interest usually comes
 * back first. The set may no longer hold a watch that is registered: the caller may have closed the file
 * descriptor before removing it.
 */
void DescriptorSet::registerWatch(int fd, Watch& watch) {
  const uint32_t wanted = watch.wantedEvents();
  if (wanted == 0 || wanted == watch.registered) return;
  epoll_event event = {.events = wanted, .data = {.u64 = packEventData(fd, watch.number)}};
  if (watch.registered == 0 || epoll_ctl(epoll_, EPOLL_CTL_MOD, fd, &event) != 0) {
    hasRefused_ |= epoll_ctl(epoll_, EPOLL_CTL_ADD, fd, &event) != 0 && errno == EPERM;
  }
  watch.registered = wanted;
}

void DescriptorSet::dropRegistration(int fd, Watch& watch) {
  if (std::exchange(watch.registered, 0) != 0 && isOpen()) epoll_ctl(epoll_, EPOLL_CTL_DEL, fd, nullptr);
}

void DescriptorSet::wait(Nanoseconds timeout, int wakeUp, ReadyDescriptors& ready) {
  constexpr Nanoseconds kRetryInterval = 10'000'000;
  ++waits_;
  ready.count = 0;
  if (timeout == 0 && !isWaiting()) return;
  const bool hasSet = open(wakeUp);
  if (hasSet) {
    registerChanges();
  } else {
    timeout = std::min(timeout, kRetryInterval);
  }
  const bool isPolled = !hasSet || hasRefused_;
  ClockForTesting* clock = clockForTesting();
  const bool isSimulated = clock != nullptr && timeout != kForever;
  const int limit = isSimulated ? 0 : millisecondsOf(timeout);
  const int count = isPolled ? pollWatches(limit, wakeUp, ready)
                             : epoll_wait(epoll_, ready.events, ReadyDescriptors::kMost, limit);
  if (isSimulated && count == 0) clock->advance(timeout);
  ready.count = std::max(count, 0);
}

/*
 * Used where epoll does not work: for files that never block, which it refuses, and while the process has no
 * file descriptor left for a set.
 */
int DescriptorSet::pollWatches(int timeout, int wakeUp, ReadyDescriptors& ready) const {
  std::vector<pollfd> items = {{wakeUp, POLLIN, 0}};
  for (const auto& [fd, watch] : watches_) {
    if (watch.isWaiting) items.push_back({fd, static_cast<short>(watch.wantedEvents()), 0});
  }
  poll(items.data(), items.size(), timeout);
  int count = 0;
  for (const pollfd& item : items) {
    if (item.revents == 0 || count == ReadyDescriptors::kMost) continue;
    const uint32_t number = item.fd == wakeUp ? kWakeUpNumber : watches_.at(item.fd).number;
    const auto events = static_cast<uint32_t>(item.revents); /* epoll has the same bits */
    ready.events[count++] = {.events = events, .data = {.u64 = packEventData(item.fd, number)}};
  }
  return count;
}

/*
 * A callback that runs the loop in this mode again makes a new wait, which reports everything that is
 * still ready; what this one found is then out of date.
 */
bool DescriptorSet::serve(const ReadyDescriptors& ready) {
  const uint64_t wait = waits_;
  bool served = false;
  for (int index = 0; index < ready.count && waits_ == wait; ++index) {
    const uint64_t data = ready.events[index].data.u64;
    const auto number = static_cast<uint32_t>(data >> 32);
    if (number == kWakeUpNumber) continue;
    const uint32_t readiness = readinessOf(ready.events[index].events);
    served |= serveWatch(static_cast<int>(data & 0xFFFFFFFF), number, readiness);
  }
  return served;
}

/* A callback may change everything, so the watch is looked up again for each descriptor on it. */
bool DescriptorSet::serveWatch(int fd, uint32_t number, uint32_t ready) {
  const uint64_t wait = waits_;
  bool served = false;
  while (waits_ == wait) {
    Watch* watch = findWatch(fd, number);
    /* It would be reported over and over. */
    if (watch != nullptr && !watch->isWaiting) dropRegistration(fd, *watch);
    DescriptorEntry* entry = watch != nullptr ? findUnserved(*watch, ready) : nullptr;
    if (entry == nullptr) break;
    entry->servedWait = wait;
    const Ref<BQFileDescriptor> descriptor = entry->descriptor;
    descriptor->call(ready & descriptor->interest());
    served = true;
  }
  return served;
}

DescriptorSet::Watch* DescriptorSet::findWatch(int fd, uint32_t number) {
  const auto found = watches_.find(fd);
  return found != watches_.end() && found->second.number == number ? &found->second : nullptr;
}

DescriptorEntry* DescriptorSet::findUnserved(Watch& watch, uint32_t ready) {
  for (DescriptorEntry* entry : watch.entries) {
    if (entry->servedWait != waits_ && (entry->descriptor->interest() & ready) != 0) return entry;
  }
  return nullptr;
}

}  // namespace bq
