/* The file descriptors of one mode, and waiting for them. */
#ifndef BQ_RUNLOOP_DESCRIPTOR_SET_H
#define BQ_RUNLOOP_DESCRIPTOR_SET_H

#include <BQ/BQRunLoop.h>

#include <sys/epoll.h>

#include <unordered_map>
#include <vector>

#include "platform/object/Object.h"
#include "platform/runloop/Clock.h"

namespace bq {

struct RunLoopMode;

/* A descriptor's place in one mode; holds the mode's reference to the descriptor. */
struct DescriptorEntry {
  Ref<BQFileDescriptor> descriptor;
  RunLoopMode* mode;
  /* The wait whose outcome the descriptor was last called for. */
  uint64_t servedWait = 0;
};

/* What a wait found. */
struct ReadyDescriptors {
  static constexpr int kMost = 64;
  epoll_event events[kMost];
  int count = 0;
};

/*
 * One epoll set. It is made when it is first needed, and what is watched is told to it only before it
 * waits, so that interest which changes to and fro in between costs nothing.
 */
class DescriptorSet {
 public:
  DescriptorSet() = default;
  ~DescriptorSet();
  DescriptorSet(const DescriptorSet&) = delete;
  DescriptorSet& operator=(const DescriptorSet&) = delete;

  void insert(DescriptorEntry& entry);
  /* Takes effect at once: the file descriptor may be closed next and its number used anew. */
  void erase(DescriptorEntry& entry);
  void interestChanged(int fd);

  bool hasEntries() const { return !watches_.empty(); }
  /* True if any of them has an interest. */
  bool isWaiting() const { return waiting_ > 0; }
  /* Any of the entries; there must be one. */
  DescriptorEntry& anyEntry() const { return *watches_.begin()->second.entries.front(); }

  /* Waits for a descriptor, for `wakeUp` to become readable or for the time to pass. */
  void wait(Nanoseconds timeout, int wakeUp, ReadyDescriptors& ready);
  /* Calls the descriptors that the last wait found. True if any was called. */
  bool serve(const ReadyDescriptors& ready);

 private:
  struct Watch {
    /* Tells this watch from an earlier one of the same file descriptor number. */
    uint32_t number = 0;
    /* The epoll events that were asked for. */
    uint32_t registered = 0;
    bool isChanged = false;
    bool isWaiting = false;
    std::vector<DescriptorEntry*> entries;

    uint32_t wantedEvents() const;
  };

  bool open(int wakeUp);
  bool isOpen() const;
  void forgetRegistrations();
  void close();
  /* The same as epoll_wait, without the set. */
  int pollWatches(int timeout, int wakeUp, ReadyDescriptors& ready) const;
  void registerChanges();
  void registerWatch(int fd, Watch& watch);
  void dropRegistration(int fd, Watch& watch);
  bool serveWatch(int fd, uint32_t number, uint32_t ready);
  Watch* findWatch(int fd, uint32_t number);
  DescriptorEntry* findUnserved(Watch& watch, uint32_t ready);

  int epoll_ = -1;
  /* In which process it was made: a child has to make its own. */
  uint32_t forks_ = 0;
  uint32_t lastWatchNumber_ = 0;
  uint64_t waits_ = 0;
  /* The watches with an interest. */
  size_t waiting_ = 0;
  std::unordered_map<int, Watch> watches_;
  std::vector<int> changed_;
  /* True once epoll has refused a watch, a regular file for instance. */
  bool hasRefused_ = false;
};

}  // namespace bq

#endif
