/* A plug-in that makes a call, in a run loop mode whose name is a constant of its own. */
#include <BQ/BQ.h>
#include <VX/VX.h>

static void count(VXMethodInvocationRef invocation, void* calls, const BQDictionary* result) {
  (void)invocation;
  BQRelease(result);
  ++*(int*)calls;
}

/* The number of results that came. */
BQ_EXPORT int makeCall(void);
int makeCall(void) {
  int calls = 0;
  VXClientContext context = {0, &calls, NULL, NULL, NULL};
  const BQURL* url = BQURLCreateWithString(BQSTR("http://127.0.0.1:1/"), NULL);
  VXMethodInvocationRef call = VXMethodInvocationCreate(url, BQSTR("method"), kVXXMLRPCProtocol);
  VXMethodInvocationSetCallBack(call, count, &context);
  VXMethodInvocationScheduleWithRunLoop(call, BQRunLoopGetCurrent(), BQSTR("mode of the plug-in"));
  while (calls == 0) BQRunLoopRunInMode(BQSTR("mode of the plug-in"), 1, true);
  BQRelease(call);
  BQRelease(url);
  return calls;
}
