#include "Call.h"

#include <BQ/BQRunLoop.h>

#include "Endpoint.h"
#include "Parameters.h"
#include "Properties.h"
#include "common/LibraryMute.h"
#include "common/Text.h"

namespace tools::vxcall {
namespace {

/* No limit, as the run loop has it: the library ends every call by itself. */
constexpr BQTimeInterval kForever = 1e30;

void receiveResult(VXMethodInvocationRef, void* info, const BQDictionary* result) {
  *static_cast<Result*>(info) = Result::adopt(result);
}

}  // namespace

Call::Call(const Options& options) : async_(options.async) {
  Ref<const BQURL> url = parseEndpoint(options.url);
  Ref<const BQString> method = makeString(options.method);
  invocation_ = Ref<OpaqueVXMethodInvocationRef>::adopt(
      VXMethodInvocationCreate(url.get(), method.get(), protocolOf(options)));

  Parameters parameters = parseParameters(options.parameters);
  VXMethodInvocationSetParameters(invocation_.get(), parameters.values.get(), parameters.order.get());
  auto set = [this](const BQString* key, BQTypeRef value) {
    VXMethodInvocationSetProperty(invocation_.get(), key, value);
  };
  setDocumentProperties(options, set);
  setTransportProperties(options, set);
}

Result Call::perform() {
  LibraryMute mute;
  return async_ ? performOnRunLoop() : Result::adopt(VXMethodInvocationInvoke(invocation_.get()));
}

Result Call::performOnRunLoop() {
  Result result;
  VXClientContext context = {0, &result, nullptr, nullptr, nullptr};
  VXMethodInvocationSetCallBack(invocation_.get(), receiveResult, &context);
  VXMethodInvocationScheduleWithRunLoop(invocation_.get(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  while (!result && BQRunLoopRunInMode(kBQRunLoopDefaultMode, kForever, true) != kBQRunLoopRunFinished) {
  }
  VXMethodInvocationUnscheduleFromRunLoop(invocation_.get(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  VXMethodInvocationSetCallBack(invocation_.get(), nullptr, nullptr);
  return result;
}

}  // namespace tools::vxcall
