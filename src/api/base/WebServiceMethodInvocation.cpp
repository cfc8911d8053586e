#include "api/base/WebServiceMethodInvocation.h"

#include <utility>

#include <BQ/BQ.h>

#include "transport/VXRunLoopSource.h"
#include "transport/WebServiceResult.h"
#include "values/Construction.h"

namespace vx {

WebServiceMethodInvocation::~WebServiceMethodInvocation() {
  serviceURL_.reset();
  paramOrder_.reset();
  params_.reset();
  if (source_ != nullptr) source_->retire();
  releaseContext(&clientContext_);
}

void WebServiceMethodInvocation::setServiceEndpoint(const BQURL* url) {
  serviceURL_ = retain(url);
}

const BQURL* WebServiceMethodInvocation::getServiceURL() {
  return serviceURL_.get();
}

void WebServiceMethodInvocation::setParameters(const BQDictionary* parameters,
                                               const BQArray* parameterOrder) {
  params_ = retain(parameters);
  if (parameterOrder != nullptr) {
    paramOrder_ = retain(parameterOrder);
  } else {
    paramOrder_ = own(parameters != nullptr ? copyDictionaryKeys(parameters) : nullptr);
  }
}

void WebServiceMethodInvocation::getParameters(const BQDictionary** outParameters,
                                               const BQArray** outParameterOrder) {
  if (outParameters != nullptr) *outParameters = BQDictionaryCreateCopy(params());
  if (outParameterOrder != nullptr) *outParameterOrder = BQArrayCreateCopy(paramOrder());
}

VXRunLoopSource* WebServiceMethodInvocation::getSource() {
  if (source_ != nullptr && source_->isFinished()) std::exchange(source_, nullptr)->retire();
  if (source_ == nullptr) source_ = createRunLoopSource();
  return source_;
}

void WebServiceMethodInvocation::setCallback(VXInvocationCallbackFunc callback,
                                             const VXClientContext* context) {
  callback_ = callback;
  releaseContext(&clientContext_);
  retainContext(&clientContext_, context);
}

void WebServiceMethodInvocation::doCallback(WebServiceResult* result) {
  if (callback_ == nullptr) return;
  const BQDictionary* copy = BQDictionaryCreateCopy(result->resultDictionary());
  auto invocation = static_cast<VXMethodInvocationRef>(const_cast<void*>(owner()));
  callback_(invocation, clientContext_.info, copy);
}

}  // namespace vx
