#include "Call.h"

#include <BQ/BQRunLoop.h>

#include "WaitingNotice.h"
#include "common/LibraryMute.h"

namespace tools::vxcall {
namespace {

/* No limit, as the run loop has it: the library ends every call by itself. */
constexpr BQTimeInterval kForever = 1e30;

void receiveResult(VXMethodInvocationRef, void* info, const BQDictionary* result) {
  *static_cast<Result*>(info) = Result::adopt(result);
}

}  // namespace

Result Call::perform() {
  WaitingNotice notice;
  LibraryMute mute;
  return isAsync_ ? performOnRunLoop() : Result::adopt(VXMethodInvocationInvoke(invocation_));
}

Result Call::performOnRunLoop() {
  Result result;
  VXClientContext context = {0, &result, nullptr, nullptr, nullptr};
  VXMethodInvocationSetCallBack(invocation_, receiveResult, &context);
  VXMethodInvocationScheduleWithRunLoop(invocation_, BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  while (!result && BQRunLoopRunInMode(kBQRunLoopDefaultMode, kForever, true) != kBQRunLoopRunFinished) {
  }
  VXMethodInvocationUnscheduleFromRunLoop(invocation_, BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  VXMethodInvocationSetCallBack(invocation_, nullptr, nullptr);
  return result;
}

}  // namespace tools::vxcall
