/*
 * A protocol handler: the library's documents without a network call. A server reads posted
 * documents with it and writes replies and faults; a client with a transport of its own writes
 * requests and reads replies.
 *
 * A handler is an object of the platform layer, compares by identity, and is used by one thread at
 * a time; several threads may use handlers of their own. Every function does nothing, and returns
 * null, for null or an object of another class in place of a handler.
 */
#ifndef VX_PROTOCOL_HANDLER_H
#define VX_PROTOCOL_HANDLER_H

#include <BQ/BQBase.h>
#include <VX/VXClientContext.h>
#include <VX/VXOverride.h>

BQ_EXTERN_C_BEGIN

/** A protocol handler. */
typedef struct OpaqueVXProtocolHandlerRef* VXProtocolHandlerRef;

/** The class of handlers. */
BQ_EXPORT BQTypeID VXProtocolHandlerGetTypeID(void);

/**
 * Makes a handler, owned by the caller.
 *
 * @param reserved  Ignored.
 * @param protocol  One of the three protocol constants themselves; anything else gives null.
 */
BQ_EXPORT VXProtocolHandlerRef VXProtocolHandlerCreate(const void* reserved, const BQString* protocol);

/**
 * Reads a posted request. The dictionary, owned by the caller, holds kVXRequestMethodName (a string),
 * kVXRequestParameters (a dictionary), kVXRequestParameterOrder (an array of names) and more, as
 * the protocol has it. A document of another kind gives a dictionary without kVXRequestMethodName.
 * Null if the document is null or does not parse, or is a request without a method or with a
 * parameter that cannot be read.
 */
BQ_EXPORT const BQDictionary* VXProtocolHandlerCopyRequestDictionary(VXProtocolHandlerRef handler,
                                                                     const BQData* document);

/**
 * Reads a reply. The dictionary, owned by the caller, is a result dictionary (see
 * VXMethodInvocation.h). Null if the method name or the document is null.
 */
BQ_EXPORT const BQDictionary* VXProtocolHandlerCopyReplyDictionary(VXProtocolHandlerRef handler,
                                                                   const BQString* methodName,
                                                                   const BQData* document);

/**
 * Writes a request, owned by the caller. `parameters` and `parameterOrder` may be null; `reserved`
 * is ignored. Null if the method name is null or no document can be made.
 */
BQ_EXPORT const BQData* VXProtocolHandlerCopyRequestDocument(VXProtocolHandlerRef handler,
                                                             const BQString* methodName,
                                                             const BQDictionary* parameters,
                                                             const BQArray* parameterOrder,
                                                             const BQDictionary* reserved);

/**
 * Writes the reply to a request, owned by the caller, in the encoding that the request dictionary
 * names. Null if no document can be made.
 *
 * @param request  What VXProtocolHandlerCopyRequestDictionary returned. XML-RPC takes null.
 * @param result   The value to return; null for none.
 */
BQ_EXPORT const BQData* VXProtocolHandlerCopyReplyDocument(VXProtocolHandlerRef handler,
                                                           const BQDictionary* request, BQTypeRef result);

/**
 * Writes a fault, owned by the caller, in the encoding that the request dictionary names. Null if
 * no document can be made.
 *
 * @param request  As above; may be null.
 * @param fault    A dictionary with kVXFaultCode, kVXFaultString and kVXFaultExtra, each optional.
 *                 XML-RPC writes -1 and "Unknown Fault" for the first two if they are missing, and
 *                 an extra as a third member, "faultExtra"; for a null dictionary a fault without
 *                 any. SOAP writes the string alone, as it stands.
 */
BQ_EXPORT const BQData* VXProtocolHandlerCopyFaultDocument(VXProtocolHandlerRef handler,
                                                           const BQDictionary* request,
                                                           const BQDictionary* fault);

/** Sets a property; null removes it. The key is copied, the value retained. */
BQ_EXPORT void VXProtocolHandlerSetProperty(VXProtocolHandlerRef handler, const BQString* key,
                                            BQTypeRef value);

/** The value of a property, owned by the caller; null if it is unset. */
BQ_EXPORT BQTypeRef VXProtocolHandlerCopyProperty(VXProtocolHandlerRef handler, const BQString* key);

/** Registers a function that writes the values of a class, as for an invocation. */
BQ_EXPORT void VXProtocolHandlerSetSerializationOverride(VXProtocolHandlerRef handler, BQTypeID typeID,
                                                         VXSerializeOverrideFunc function,
                                                         const VXClientContext* context);

/** Registers a function that reads the SOAP elements of a name, as for an invocation. */
BQ_EXPORT void VXProtocolHandlerSetDeserializationOverride(VXProtocolHandlerRef handler,
                                                           const BQString* typeNamespace,
                                                           const BQString* typeName,
                                                           VXDeserializeOverrideFunc function,
                                                           const VXClientContext* context);

BQ_EXTERN_C_END

#endif
