/* What a run loop serves while it runs under one name. */
#ifndef BQ_RUNLOOP_RUN_LOOP_MODE_H
#define BQ_RUNLOOP_RUN_LOOP_MODE_H

#include <BQ/BQString.h>

#include "platform/object/Object.h"
#include "platform/runloop/DescriptorSet.h"
#include "platform/runloop/SourceSet.h"
#include "platform/runloop/TimerHeap.h"

namespace bq {

struct RunLoopMode {
  RunLoopMode(BQRunLoop& owner, const BQString* modeName)
      : loop(owner),
        name(Ref<const BQString>::adopt(
            BQStringCreateWithUTF8(BQStringGetUTF8Ptr(modeName), BQStringGetLength(modeName)))) {}

  BQRunLoop& loop;
  /* Not the caller's: that may be a constant of a plug-in that is unloaded while the mode is kept. */
  const Ref<const BQString> name;
  /* Under the lock of the loop; the rest belongs to the loop's thread. */
  SourceSet sources;
  TimerHeap timers;
  DescriptorSet descriptors;
  /* How many runs are in this mode, one inside the other. */
  int runs = 0;
};

}  // namespace bq

#endif
