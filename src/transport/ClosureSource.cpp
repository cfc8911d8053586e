#include "transport/ClosureSource.h"

#include <utility>

#include <BQ/BQString.h>

#include "api/base/WebServiceMethodInvocation.h"

namespace vx {

ClosureSource::ClosureSource(WebServiceMethodInvocation* invocation)
    : invocation(invocation), result(std::make_unique<WebServiceResult>()) {}

void ClosureSource::perform() {
  if (isFinished()) return;
  result->becomeFault(BQSTR("ClosureSource::perform not overridden"));
  finish();
}

void ClosureSource::finish() {
  end();
  std::unique_ptr<WebServiceResult> finished = std::move(result);
  if (finished != nullptr) invocation->doCallback(finished.get());
}

}  // namespace vx
