#include "api/base/WebServiceMethodInvocation.h"

#include <utility>

#include <BQ/BQ.h>

#include "api/base/AgreementKeys.h"
#include "transport/VXRunLoopSource.h"
#include "transport/WebServiceResult.h"
#include "values/Construction.h"
#include "values/DictIterator.h"

namespace vx {

WebServiceMethodInvocation::WebServiceMethodInvocation(const BQDictionary* agreement) {
  auto* url = getAgreementEntry<BQString>(agreement, kAgreementServiceURL, BQStringGetTypeID());
  serviceURL = own(BQURLCreateWithString(url, nullptr));
  paramOrder = retain(getAgreementEntry<BQArray>(agreement, kAgreementParamOrder, BQArrayGetTypeID()));
  params = retain(getAgreementEntry<BQDictionary>(agreement, kAgreementParamValues, BQDictionaryGetTypeID()));
  auto* stored = getAgreementEntry<BQDictionary>(agreement, kAgreementProperties, BQDictionaryGetTypeID());
  for (DictIterator entries(stored); entries.hasNext();) {
    auto* key = static_cast<const BQString*>(entries.nextKey());
    setProperty(key, entries.valueFor(key));
  }
}

WebServiceMethodInvocation::~WebServiceMethodInvocation() {
  /* First, since what is released may call a function of the caller's that runs the loop. */
  dropSource();
  releaseContext(&clientContext);
}

void WebServiceMethodInvocation::setServiceEndpoint(const BQURL* url) {
  serviceURL = retain(url);
}

const BQURL* WebServiceMethodInvocation::getServiceURL() {
  return serviceURL.get();
}

void WebServiceMethodInvocation::setParameters(const BQDictionary* parameters,
                                               const BQArray* parameterOrder) {
  /* Released last: a function of the caller's that this calls may set other parameters. */
  const auto former = std::exchange(params, retain(parameters));
  if (parameterOrder != nullptr) {
    paramOrder = retain(parameterOrder);
  } else {
    paramOrder = own(parameters != nullptr ? copyDictionaryKeys(parameters) : nullptr);
  }
}

void WebServiceMethodInvocation::getParameters(const BQDictionary** outParameters,
                                               const BQArray** outParameterOrder) {
  if (outParameters != nullptr) *outParameters = BQDictionaryCreateCopy(params.get());
  if (outParameterOrder != nullptr) *outParameterOrder = BQArrayCreateCopy(paramOrder.get());
}

void WebServiceMethodInvocation::populateAgreement(BQDictionary* agreement) const {
  BQDictionarySetValue(agreement, kAgreementServiceURL, BQURLGetString(serviceURL.get()));
  BQDictionarySetValue(agreement, kAgreementParamOrder, paramOrder.get());
  BQDictionarySetValue(agreement, kAgreementParamValues, params.get());
  BQDictionarySetValue(agreement, kAgreementProperties, getProperties());
}

VXRunLoopSource* WebServiceMethodInvocation::getSourceForCall() {
  if (source != nullptr && source->isFinished()) dropSource();
  return getSource();
}

VXRunLoopSource* WebServiceMethodInvocation::getSource() {
  if (source == nullptr) source = createRunLoopSource();
  return source;
}

bool WebServiceMethodInvocation::giveUpCall() {
  if (isCallOver() || !source->hasBegun()) return true;
  if (source->isActive()) return false;
  dropSource();
  return true;
}

bool WebServiceMethodInvocation::waitsIn(BQRunLoop* runLoop, const BQString* mode) const {
  return !isCallOver() && source->isIn(runLoop, mode);
}

bool WebServiceMethodInvocation::isCallOver() const {
  return source == nullptr || source->isFinished();
}

void WebServiceMethodInvocation::dropSource() {
  if (source != nullptr) std::exchange(source, nullptr)->retire();
}

void WebServiceMethodInvocation::setCallback(VXInvocationCallbackFunc function,
                                             const VXClientContext* context) {
  /* The functions of either context may set another callback. That of the new one is in place, whole,
   * before what they set is dropped. */
  callback = nullptr;
  releaseContext(&clientContext);
  VXClientContext retained;
  retainContext(&retained, context);
  callback = function;
  std::swap(clientContext, retained);
  releaseContext(&retained);
}

void WebServiceMethodInvocation::doCallback(WebServiceResult* result) {
  if (callback == nullptr) return;
  const BQDictionary* copy = BQDictionaryCreateCopy(result->resultDictionary.get());
  auto invocation = static_cast<VXMethodInvocationRef>(const_cast<void*>(getOwner()));
  callback(invocation, clientContext.info, copy);
}

}  // namespace vx
