/* A file descriptor that is watched for readiness. */
#ifndef BQ_RUNLOOP_FILE_DESCRIPTOR_H
#define BQ_RUNLOOP_FILE_DESCRIPTOR_H

#include <BQ/BQRunLoop.h>

#include <memory>
#include <vector>

#include "platform/object/Object.h"
#include "platform/runloop/DescriptorSet.h"

struct BQFileDescriptor final : bq::Object {
  BQFileDescriptor(BQTypeID typeID, int fd, uint32_t interest, BQFileDescriptorCallBack callback, void* info)
      : Object(typeID), fd_(fd), interest_(interest), callback_(callback), info_(info) {}

  int fd() const { return fd_; }
  uint32_t interest() const { return interest_; }
  void setInterest(uint32_t interest);

  /* Puts the descriptor in a mode. Refused if it is there, invalid, or on another run loop. */
  void addTo(bq::RunLoopMode& mode);
  /* The mode's entry, which the caller destroys; null if the descriptor is not in the mode. */
  std::unique_ptr<bq::DescriptorEntry> removeFrom(bq::RunLoopMode& mode);
  void invalidate();

  void call(uint32_t ready) { callback_(this, ready, info_); }

 private:
  const int fd_;
  uint32_t interest_;
  const BQFileDescriptorCallBack callback_;
  void* const info_;
  bool valid_ = true;
  std::vector<std::unique_ptr<bq::DescriptorEntry>> entries_;
};

#endif
