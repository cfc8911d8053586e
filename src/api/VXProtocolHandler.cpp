#include <VX/VXProtocolHandler.h>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "api/ProtocolHandlerHandle.h"
#include "diag/Switches.h"
#include "soap/SOAPProtocolHandler.h"
#include "transport/LibraryBundle.h"
#include "xmlrpc/XMLRPCProtocolHandler.h"

namespace {

using Handler = vx::InUse<OpaqueVXProtocolHandlerRef>;

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
  const Handler object(handler);
  if (!object || document == nullptr) return nullptr;
  const BQString* message = nullptr;
  const BQDictionary* request = object->parsePostData(document, vx::kDefaultEncoding, &message);
  BQRelease(message);
  return request;
}

const BQDictionary* VXProtocolHandlerCopyReplyDictionary(VXProtocolHandlerRef handler,
                                                         const BQString* methodName, const BQData* document) {
  const Handler object(handler);
  if (!object || methodName == nullptr || document == nullptr) return nullptr;
  const BQString* message = nullptr;
  const BQDictionary* reply = object->parseReplyData(methodName, document, vx::kDefaultEncoding, &message);
  BQRelease(message);
  return reply;
}

const BQData* VXProtocolHandlerCopyRequestDocument(VXProtocolHandlerRef handler, const BQString* methodName,
                                                   const BQDictionary* parameters,
                                                   const BQArray* parameterOrder,
                                                   const BQDictionary* reserved) {
  const Handler object(handler);
  if (!object || methodName == nullptr) return nullptr;
  return object->createRequest(methodName, parameters, parameterOrder, reserved);
}

const BQData* VXProtocolHandlerCopyReplyDocument(VXProtocolHandlerRef handler, const BQDictionary* request,
                                                 BQTypeRef result) {
  const Handler object(handler);
  return object ? object->createReply(request, result) : nullptr;
}

const BQData* VXProtocolHandlerCopyFaultDocument(VXProtocolHandlerRef handler, const BQDictionary* request,
                                                 const BQDictionary* fault) {
  const Handler object(handler);
  return object ? object->createFault(request, fault) : nullptr;
}

void VXProtocolHandlerSetProperty(VXProtocolHandlerRef handler, const BQString* key, BQTypeRef value) {
  if (const Handler object(handler); object) object->setProperty(key, value);
}

BQTypeRef VXProtocolHandlerCopyProperty(VXProtocolHandlerRef handler, const BQString* key) {
  const Handler object(handler);
  return object ? BQRetain(object->getProperty(key)) : nullptr;
}

void VXProtocolHandlerSetSerializationOverride(VXProtocolHandlerRef handler, BQTypeID typeID,
                                               VXSerializeOverrideFunc function,
                                               const VXClientContext* context) {
  if (const Handler object(handler); object) object->addSerializationOverride(typeID, function, context);
}

void VXProtocolHandlerSetDeserializationOverride(VXProtocolHandlerRef handler, const BQString* typeNamespace,
                                                 const BQString* typeName, VXDeserializeOverrideFunc function,
                                                 const VXClientContext* context) {
  const Handler object(handler);
  if (object) object->addDeserializationOverride(typeNamespace, typeName, function, context);
}
