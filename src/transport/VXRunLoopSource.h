/* An object that works as a source on run loops. */
#ifndef VX_TRANSPORT_VX_RUN_LOOP_SOURCE_H
#define VX_TRANSPORT_VX_RUN_LOOP_SOURCE_H

#include <BQ/BQRunLoop.h>

#include "values/Owned.h"

namespace vx {

class VXRunLoopSource {
 protected:
  virtual ~VXRunLoopSource() = default;

 public:
  VXRunLoopSource();
  VXRunLoopSource(const VXRunLoopSource&) = delete;
  VXRunLoopSource& operator=(const VXRunLoopSource&) = delete;

  /* Borrowed. */
  virtual const BQString* description();
  /* Called once for each signal, except while one of the object's own callbacks runs. */
  virtual void perform() {}
  virtual void schedule(BQRunLoop* runLoop, const BQString* mode);
  virtual void cancel(BQRunLoop* runLoop, const BQString* mode);
  /* The platform's source, borrowed, made when it is first asked for. */
  BQRunLoopSource* getSourceCreatingIfNecessary();

  /* Both return true. */
  bool addToRunLoop(BQRunLoop* runLoop, const BQString* mode);
  bool removeFromRunLoop(BQRunLoop* runLoop, const BQString* mode);
  bool isIn(BQRunLoop* runLoop, const BQString* mode) const;

  /* Whether the source has started on what it was made for. */
  bool hasBegun() const { return begun_; }
  /* Whether what the source was made for has been done. */
  bool isFinished() const { return finished_; }
  /* Whether one of its callbacks is running. */
  bool isActive() const { return entries_ > 0; }

  /* Asks the run loop for a perform. */
  void signal() { BQRunLoopSourceSignal(source.get()); }

  /*
   * Takes the object off its run loops and destroys it; if one of its own callbacks is running, when that
   * returns. The owner calls this in place of the destructor, for two reasons: a callback of the caller's may
   * drop the last reference to the invocation; and what the destructor releases may call a function of the
   * caller's that runs the loop.
   */
  void retire();

 protected:
  /* Every entry from the platform holds one of these while the object is in use. */
  class Entry {
   public:
    explicit Entry(VXRunLoopSource* object) : object_(object) { ++object_->entries_; }
    ~Entry() {
      if (--object_->entries_ == 0 && object_->retired_) delete object_;
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;

   private:
    VXRunLoopSource* object_;
  };

  void begin() { begun_ = true; }
  void end() { finished_ = true; }

 private:
  static const void* _retain(const void* info);
  static void _release(const void* info);
  static const BQString* _copyDescription(const void* info);
  static bool _equal(const void* first, const void* second);
  static BQHashCode _hash(const void* info);
  static void _schedule(void* info, BQRunLoop* runLoop, const BQString* mode);
  static void _cancel(void* info, BQRunLoop* runLoop, const BQString* mode);
  static void _perform(void* info);

  BQRunLoopSourceContext context;
  Owned<BQRunLoopSource> source;
  int entries_ = 0;
  bool retired_ = false;
  bool begun_ = false;
  bool finished_ = false;
};

}  // namespace vx

#endif
