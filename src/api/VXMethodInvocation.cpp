#include <VX/VXMethodInvocation.h>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "api/MethodInvocationHandle.h"
#include "api/base/AgreementKeys.h"
#include "diag/Switches.h"
#include "soap/SOAPWebServiceMethodInvocation.h"
#include "transport/LibraryBundle.h"
#include "transport/VXRunLoopSource.h"
#include "transport/WebServiceResult.h"
#include "xmlrpc/XMLRPCWebServiceMethodInvocation.h"

namespace {

BQ_DEFINE_STATIC_STRING(kVXSyncMode, "VXSYNC");

/* Stores the result of a synchronous call in the slot that `info` points to. */
void _syncCallback(VXMethodInvocationRef, void* info, const BQDictionary* result) {
  *static_cast<const BQDictionary**>(info) = result;
}

/* The result of a call that a function of the caller's made impossible, owned by the caller. */
const BQDictionary* createFaultResult(const BQString* message) {
  vx::WebServiceResult result;
  result.becomeFault(message);
  return BQDictionaryCreateCopy(result.resultDictionary.get());
}

/* An invocation of a protocol, recognised by identity; null for anything else. */
vx::WebServiceMethodInvocation* createInvocation(const BQURL* url, const BQString* methodName,
                                                 const BQString* protocol) {
  if (protocol == kVXXMLRPCProtocol) return new vx::XMLRPCWebServiceMethodInvocation(url, methodName);
  if (protocol == kVXSOAP1999Protocol || protocol == kVXSOAP2001Protocol) {
    return new vx::SOAPWebServiceMethodInvocation(protocol, url, methodName);
  }
  return nullptr;
}

/* An invocation of the protocol that a serialized form names by text; null for any other. */
vx::WebServiceMethodInvocation* createInvocation(const BQDictionary* agreement) {
  BQTypeRef protocol = BQDictionaryGetValue(agreement, vx::kAgreementProtocolType);
  if (BQEqual(protocol, kVXXMLRPCProtocol)) return new vx::XMLRPCWebServiceMethodInvocation(agreement);
  for (const BQString* constant : {kVXSOAP1999Protocol, kVXSOAP2001Protocol}) {
    if (BQEqual(protocol, constant)) return new vx::SOAPWebServiceMethodInvocation(constant, agreement);
  }
  return nullptr;
}

}  // namespace

BQTypeID VXMethodInvocationGetTypeID(void) {
  return OpaqueVXMethodInvocationRef::typeID();
}

VXMethodInvocationRef VXMethodInvocationCreate(const BQURL* url, const BQString* methodName,
                                               const BQString* protocol) {
  vx::vxInitStatics();
  vx::registerLibraryBundle();
  if (url == nullptr || protocol == nullptr) return nullptr;
  vx::WebServiceMethodInvocation* invocation = createInvocation(url, methodName, protocol);
  return invocation == nullptr ? nullptr : OpaqueVXMethodInvocationRef::wrap(invocation);
}

void VXMethodInvocationSetParameters(VXMethodInvocationRef invocation, const BQDictionary* parameters,
                                     const BQArray* parameterOrder) {
  if (invocation != nullptr) invocation->wrapped->setParameters(parameters, parameterOrder);
}

const BQDictionary* VXMethodInvocationCopyParameters(VXMethodInvocationRef invocation,
                                                     const BQArray** parameterOrder) {
  if (parameterOrder != nullptr) *parameterOrder = nullptr;
  const BQDictionary* parameters = nullptr;
  if (invocation != nullptr) invocation->wrapped->getParameters(&parameters, parameterOrder);
  return parameters;
}

void VXMethodInvocationSetProperty(VXMethodInvocationRef invocation, const BQString* key, BQTypeRef value) {
  if (invocation != nullptr) invocation->wrapped->setProperty(key, value);
}

BQTypeRef VXMethodInvocationCopyProperty(VXMethodInvocationRef invocation, const BQString* key) {
  return invocation == nullptr ? nullptr : BQRetain(invocation->wrapped->getProperty(key));
}

void VXMethodInvocationAddSerializationOverride(VXMethodInvocationRef invocation, BQTypeID typeID,
                                                VXSerializeOverrideFunc function,
                                                const VXClientContext* context) {
  if (invocation != nullptr) invocation->wrapped->addSerializationOverride(typeID, function, context);
}

void VXMethodInvocationAddDeserializationOverride(VXMethodInvocationRef invocation,
                                                  const BQString* typeNamespace, const BQString* typeName,
                                                  VXDeserializeOverrideFunc function,
                                                  const VXClientContext* context) {
  if (invocation == nullptr) return;
  invocation->wrapped->addDeserializationOverride(typeNamespace, typeName, function, context);
}

void VXMethodInvocationSetCallBack(VXMethodInvocationRef invocation, VXInvocationCallbackFunc callback,
                                   const VXClientContext* context) {
  if (invocation == nullptr) return;
  /* The context that is dropped may hold the last reference. */
  auto kept = vx::retain(invocation);
  invocation->wrapped->setCallback(callback, context);
}

void VXMethodInvocationScheduleWithRunLoop(VXMethodInvocationRef invocation, BQRunLoop* runLoop,
                                           const BQString* mode) {
  if (invocation == nullptr) return;
  vx::VXRunLoopSource* source = invocation->wrapped->getSourceForCall();
  if (source != nullptr && source->addToRunLoop(runLoop, mode)) source->signal();
}

void VXMethodInvocationUnscheduleFromRunLoop(VXMethodInvocationRef invocation, BQRunLoop* runLoop,
                                             const BQString* mode) {
  if (invocation == nullptr) return;
  vx::VXRunLoopSource* source = invocation->wrapped->getSource();
  if (source != nullptr) source->removeFromRunLoop(runLoop, mode);
}

const BQDictionary* VXMethodInvocationInvoke(VXMethodInvocationRef invocation) {
  if (invocation == nullptr) return nullptr;
  auto kept = vx::retain(invocation);
  vx::WebServiceMethodInvocation* call = invocation->wrapped;
  if (!call->giveUpCall()) return createFaultResult(BQSTR("The invocation is being made already"));
  const BQDictionary* result = nullptr;
  VXClientContext context = {0, &result, nullptr, nullptr, nullptr};
  VXMethodInvocationSetCallBack(invocation, _syncCallback, &context);
  BQRunLoop* runLoop = BQRunLoopGetCurrent();
  VXMethodInvocationScheduleWithRunLoop(invocation, runLoop, kVXSyncMode);
  /* An override may have set another callback, which gets the result, or taken the call off the mode. */
  bool isInMode = true;
  while (result == nullptr && isInMode && !call->isCallOver()) {
    isInMode = BQRunLoopRunInMode(kVXSyncMode, 1e30, true) != kBQRunLoopRunFinished;
  }
  VXMethodInvocationUnscheduleFromRunLoop(invocation, runLoop, kVXSyncMode);
  VXMethodInvocationSetCallBack(invocation, nullptr, nullptr);
  if (result != nullptr) return result;
  call->giveUpCall();
  return createFaultResult(BQSTR("The invocation was taken out of its synchronous call"));
}

const BQData* VXMethodInvocationCopySerialization(VXMethodInvocationRef invocation) {
  if (invocation == nullptr) return nullptr;
  auto agreement = vx::own(invocation->wrapped->copyAgreement());
  return agreement == nullptr ? nullptr : BQPropertyListCreateXMLData(agreement.get());
}

VXMethodInvocationRef VXMethodInvocationCreateFromSerialization(const BQData* data) {
  vx::vxInitStatics();
  vx::registerLibraryBundle();
  auto value = vx::own(BQPropertyListCreateFromXMLData(data, nullptr));
  if (BQGetTypeID(value.get()) != BQDictionaryGetTypeID()) return nullptr;
  vx::WebServiceMethodInvocation* invocation =
      createInvocation(static_cast<const BQDictionary*>(value.get()));
  return invocation == nullptr ? nullptr : OpaqueVXMethodInvocationRef::wrap(invocation);
}
