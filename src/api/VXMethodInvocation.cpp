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

using Invocation = vx::InUse<OpaqueVXMethodInvocationRef>;

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
  if (const Invocation object(invocation); object) object->setParameters(parameters, parameterOrder);
}

const BQDictionary* VXMethodInvocationCopyParameters(VXMethodInvocationRef invocation,
                                                     const BQArray** parameterOrder) {
  if (parameterOrder != nullptr) *parameterOrder = nullptr;
  const BQDictionary* parameters = nullptr;
  if (const Invocation object(invocation); object) object->getParameters(&parameters, parameterOrder);
  return parameters;
}

void VXMethodInvocationSetProperty(VXMethodInvocationRef invocation, const BQString* key, BQTypeRef value) {
  if (const Invocation object(invocation); object) object->setProperty(key, value);
}

BQTypeRef VXMethodInvocationCopyProperty(VXMethodInvocationRef invocation, const BQString* key) {
  const Invocation object(invocation);
  return object ? BQRetain(object->getProperty(key)) : nullptr;
}

void VXMethodInvocationAddSerializationOverride(VXMethodInvocationRef invocation, BQTypeID typeID,
                                                VXSerializeOverrideFunc function,
                                                const VXClientContext* context) {
  if (const Invocation object(invocation); object)
    object->addSerializationOverride(typeID, function, context);
}

void VXMethodInvocationAddDeserializationOverride(VXMethodInvocationRef invocation,
                                                  const BQString* typeNamespace, const BQString* typeName,
                                                  VXDeserializeOverrideFunc function,
                                                  const VXClientContext* context) {
  const Invocation object(invocation);
  if (object) object->addDeserializationOverride(typeNamespace, typeName, function, context);
}

void VXMethodInvocationSetCallBack(VXMethodInvocationRef invocation, VXInvocationCallbackFunc callback,
                                   const VXClientContext* context) {
  if (const Invocation object(invocation); object) object->setCallback(callback, context);
}

void VXMethodInvocationScheduleWithRunLoop(VXMethodInvocationRef invocation, BQRunLoop* runLoop,
                                           const BQString* mode) {
  const Invocation object(invocation);
  if (!object) return;
  vx::VXRunLoopSource* source = object->getSourceForCall();
  if (source != nullptr && source->addToRunLoop(runLoop, mode)) source->signal();
}

void VXMethodInvocationUnscheduleFromRunLoop(VXMethodInvocationRef invocation, BQRunLoop* runLoop,
                                             const BQString* mode) {
  const Invocation object(invocation);
  if (!object) return;
  vx::VXRunLoopSource* source = object->getSource();
  if (source != nullptr) source->removeFromRunLoop(runLoop, mode);
}

const BQDictionary* VXMethodInvocationInvoke(VXMethodInvocationRef invocation) {
  const Invocation call(invocation);
  if (!call) return nullptr;
  BQRunLoop* runLoop = BQRunLoopGetCurrent();
  if (runLoop == nullptr)
    return createFaultResult(BQSTR("The thread is ending and cannot make calls any more"));
  if (!call->giveUpCall()) return createFaultResult(BQSTR("The invocation is being made already"));
  const BQDictionary* result = nullptr;
  VXClientContext context = {0, &result, nullptr, nullptr, nullptr};
  VXMethodInvocationSetCallBack(invocation, _syncCallback, &context);
  VXMethodInvocationScheduleWithRunLoop(invocation, runLoop, kVXSyncMode);
  /* An override may have set another callback, which gets the result, or taken the call off the mode. */
  while (result == nullptr && call->waitsIn(runLoop, kVXSyncMode)) {
    BQRunLoopRunInMode(kVXSyncMode, 1e30, true);
  }
  VXMethodInvocationUnscheduleFromRunLoop(invocation, runLoop, kVXSyncMode);
  VXMethodInvocationSetCallBack(invocation, nullptr, nullptr);
  if (result != nullptr) return result;
  call->giveUpCall();
  return createFaultResult(BQSTR("The invocation was taken out of its synchronous call"));
}

const BQData* VXMethodInvocationCopySerialization(VXMethodInvocationRef invocation) {
  const Invocation object(invocation);
  if (!object) return nullptr;
  auto agreement = vx::own(object->copyAgreement());
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
