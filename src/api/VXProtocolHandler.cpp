#include <VX/VXProtocolHandler.h>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "api/ProtocolHandlerHandle.h"
#include "diag/Switches.h"
#include "soap/SOAPProtocolHandler.h"
#include "transport/LibraryBundle.h"
#include "values/Owned.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"

namespace {

/* A handler of a protocol, recognised by identity; null for anything else. */
vx::VXProtocolHandler* createHandler(const BQString* protocol) {
  if (protocol == nullptr) return nullptr;
  if (protocol == kVXXMLRPCProtocol) return new vx::XMLRPCProtocolHandler;
  if (protocol == kVXSOAP1999Protocol || protocol == kVXSOAP2001Protocol) {
    return new vx::SOAPProtocolHandler(protocol);
  }
  return nullptr;
}

}  // namespace

BQTypeID VXProtocolHandlerGetTypeID(void) {
  return OpaqueVXProtocolHandlerRef::typeID();
}

VXProtocolHandlerRef VXProtocolHandlerCreate(const void*, const BQString* protocol) {
  vx::vxInitStatics();
  vx::registerLibraryBundle();
  vx::VXProtocolHandler* handler = createHandler(protocol);
  return handler == nullptr ? nullptr : OpaqueVXProtocolHandlerRef::wrap(handler);
}

const BQDictionary* VXProtocolHandlerCopyRequestDictionary(VXProtocolHandlerRef handler,
                                                           const BQData* document) {
  if (handler == nullptr || document == nullptr) return nullptr;
  const BQString* message = nullptr;
  const BQDictionary* request = handler->wrapped->parsePostData(document, vx::kDefaultEncoding, &message);
  BQRelease(message);
  return request;
}

const BQDictionary* VXProtocolHandlerCopyReplyDictionary(VXProtocolHandlerRef handler,
                                                         const BQString* methodName, const BQData* document) {
  if (handler == nullptr || methodName == nullptr || document == nullptr) return nullptr;
  const BQString* message = nullptr;
  const BQDictionary* reply =
      handler->wrapped->parseReplyData(methodName, document, vx::kDefaultEncoding, &message);
  BQRelease(message);
  return reply;
}

const BQData* VXProtocolHandlerCopyRequestDocument(VXProtocolHandlerRef handler, const BQString* methodName,
                                                   const BQDictionary* parameters,
                                                   const BQArray* parameterOrder,
                                                   const BQDictionary* reserved) {
  if (handler == nullptr || methodName == nullptr) return nullptr;
  return handler->wrapped->createRequest(methodName, parameters, parameterOrder, reserved);
}

const BQData* VXProtocolHandlerCopyReplyDocument(VXProtocolHandlerRef handler, const BQDictionary* request,
                                                 BQTypeRef result) {
  return handler == nullptr ? nullptr : handler->wrapped->createReply(request, result);
}

const BQData* VXProtocolHandlerCopyFaultDocument(VXProtocolHandlerRef handler, const BQDictionary* request,
                                                 const BQDictionary* fault) {
  return handler == nullptr ? nullptr : handler->wrapped->createFault(request, fault);
}

void VXProtocolHandlerSetProperty(VXProtocolHandlerRef handler, const BQString* key, BQTypeRef value) {
  if (handler != nullptr) handler->wrapped->setProperty(key, value);
}

BQTypeRef VXProtocolHandlerCopyProperty(VXProtocolHandlerRef handler, const BQString* key) {
  return handler == nullptr ? nullptr : BQRetain(handler->wrapped->getProperty(key));
}

void VXProtocolHandlerSetSerializationOverride(VXProtocolHandlerRef handler, BQTypeID typeID,
                                               VXSerializeOverrideFunc function,
                                               const VXClientContext* context) {
  if (handler != nullptr) handler->wrapped->addSerializationOverride(typeID, function, context);
}

void VXProtocolHandlerSetDeserializationOverride(VXProtocolHandlerRef handler, const BQString* typeNamespace,
                                                 const BQString* typeName, VXDeserializeOverrideFunc function,
                                                 const VXClientContext* context) {
  if (handler != nullptr) {
    handler->wrapped->addDeserializationOverride(typeNamespace, typeName, function, context);
  }
}
