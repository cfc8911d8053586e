/* A source that carries one call of an invocation. */
#ifndef VX_TRANSPORT_CLOSURE_SOURCE_H
#define VX_TRANSPORT_CLOSURE_SOURCE_H

#include <memory>

#include "transport/VXRunLoopSource.h"
#include "transport/WebServiceResult.h"

namespace vx {

class WebServiceMethodInvocation;

class ClosureSource : public VXRunLoopSource {
 public:
  /* The invocation owns the source. */
  explicit ClosureSource(WebServiceMethodInvocation* invocation);

  /* Fails: a transport is what a derived class adds. */
  void perform() override;

  /* Ends the call: hands the result to the invocation, which may destroy itself meanwhile. */
  virtual void finish();

 protected:
  WebServiceMethodInvocation* const invocation;
  /* The result being filled; null once the call has ended. */
  std::unique_ptr<WebServiceResult> result;
};

}  // namespace vx

#endif
