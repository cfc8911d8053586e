#include "transport/ClosureSource.h"

#include <utility>

#include <BQ/BQString.h>

#include "api/base/WebServiceMethodInvocation.h"

namespace vx {

ClosureSource::ClosureSource(WebServiceMethodInvocation* invocation)
    : invocation_(invocation), result_(std::make_unique<WebServiceResult>()) {}

void ClosureSource::perform() {
  if (isFinished()) return;
  result()->becomeFault(BQSTR("ClosureSource::perform not overridden"));
  finish();
}

void ClosureSource::finish() {
  std::unique_ptr<WebServiceResult> finished = std::move(result_);
  if (finished != nullptr) invocation_->doCallback(finished.get());
}

}  // namespace vx
