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
  bool isFinished() const override { return result_ == nullptr; }

  /* Ends the call: hands the result to the invocation, which may destroy itself meanwhile. */
  virtual void finish();

 protected:
  WebServiceMethodInvocation* invocation() const { return invocation_; }
  /* The result being filled; null once the call has ended. */
  WebServiceResult* result() const { return result_.get(); }

 private:
  WebServiceMethodInvocation* const invocation_;
  std::unique_ptr<WebServiceResult> result_;
};

}  // namespace vx

#endif
