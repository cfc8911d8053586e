/* A plug-in that uses both libraries, in a run loop mode whose name is a constant of its own. */
#include <BQ/BQ.h>
#include <VX/VX.h>

static void ignore(BQRunLoopTimer* timer, void* info) {
  (void)timer;
  (void)info;
}

BQ_EXPORT bool useLibraries(void);
bool useLibraries(void) {
  const BQString* mode = BQSTR("mode of the plug-in");
  BQRunLoopTimer* timer = BQRunLoopTimerCreate(0, 0, 0, 0, ignore, NULL);
  BQRunLoopAddTimer(BQRunLoopGetCurrent(), timer, mode);
  BQRelease(timer);
  return BQRunLoopRunInMode(mode, 1, false) == kBQRunLoopRunFinished && VXMethodInvocationGetTypeID() != 0;
}
