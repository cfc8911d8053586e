/*
 * A method invocation: one remote procedure call, its parameters and its properties.
 *
 * An invocation is an object of the platform layer: BQRetain, BQRelease and the other functions of
 * BQObject.h work on it; it compares by identity. One thread at a time may use it; several threads
 * may use invocations of their own. Every function does nothing, and returns null or false, for null or
 * an object of another class in place of an invocation.
 *
 * A call always ends with one result dictionary, whose keys stand in VXConstants.h: the method's
 * return value, or a fault when the server answered with one, the reply could not be used, or the
 * transport failed.
 */
#ifndef VX_METHOD_INVOCATION_H
#define VX_METHOD_INVOCATION_H

#include <BQ/BQBase.h>
#include <VX/VXClientContext.h>
#include <VX/VXOverride.h>

BQ_EXTERN_C_BEGIN

/**
 * Receives the result of a scheduled call, on the thread of the run loop that performed it.
 *
 * @param invocation  The invocation; borrowed. It may be released, or scheduled again, from here.
 * @param info        The context's info.
 * @param result      The result dictionary, owned by the function, which must release it.
 */
typedef void (*VXInvocationCallbackFunc)(VXMethodInvocationRef invocation, void* info,
                                         const BQDictionary* result);

/** The class of invocations. */
BQ_EXPORT BQTypeID VXMethodInvocationGetTypeID(void);

/**
 * Makes an invocation, owned by the caller.
 *
 * @param url         The endpoint, http or https.
 * @param methodName  The method. It is sent as it stands, without escaping. May be null, but then
 *                    no request can be made.
 * @param protocol    One of the three protocol constants themselves.
 * @return Null if the URL or the protocol is null, or the protocol is another object.
 */
BQ_EXPORT VXMethodInvocationRef VXMethodInvocationCreate(const BQURL* url, const BQString* methodName,
                                                         const BQString* protocol);

/**
 * Sets the parameters, which are retained, not copied.
 *
 * @param parameters      The values by name; may be null. A name without a value is sent as nil.
 * @param parameterOrder  The names in the order in which they are sent; if null, all keys of the
 *                        dictionary in its order.
 */
BQ_EXPORT void VXMethodInvocationSetParameters(VXMethodInvocationRef invocation,
                                               const BQDictionary* parameters, const BQArray* parameterOrder);

/**
 * A shallow copy of the parameters, owned by the caller, or null if there are none.
 *
 * @param parameterOrder  If not null, receives a copy of the order, owned by the caller, or null.
 */
BQ_EXPORT const BQDictionary* VXMethodInvocationCopyParameters(VXMethodInvocationRef invocation,
                                                               const BQArray** parameterOrder);

/**
 * Sets a property: one of the constants of VXConstants.h, or a key of the caller's own. The key is
 * copied, the value retained; null removes the property. A value of another kind than the property
 * wants is treated as unset.
 */
BQ_EXPORT void VXMethodInvocationSetProperty(VXMethodInvocationRef invocation, const BQString* key,
                                             BQTypeRef value);

/** The value of a property, owned by the caller; null if it is unset. */
BQ_EXPORT BQTypeRef VXMethodInvocationCopyProperty(VXMethodInvocationRef invocation, const BQString* key);

/**
 * Registers a function that writes the values of a class. It stays registered as long as the
 * invocation lives.
 *
 * @param typeID   The class, such as BQStringGetTypeID().
 * @param context  May be null.
 */
BQ_EXPORT void VXMethodInvocationAddSerializationOverride(VXMethodInvocationRef invocation, BQTypeID typeID,
                                                          VXSerializeOverrideFunc function,
                                                          const VXClientContext* context);

/**
 * Registers a function that reads the SOAP elements of a name. It stays registered as long as the
 * invocation lives. XML-RPC does not consult it.
 *
 * @param typeNamespace  The namespace that the element's name must be in, without regard to case;
 *                       "" and "*" match any or none, null only none.
 * @param typeName       The local name, matched likewise.
 * @param context        May be null.
 */
BQ_EXPORT void VXMethodInvocationAddDeserializationOverride(VXMethodInvocationRef invocation,
                                                            const BQString* typeNamespace,
                                                            const BQString* typeName,
                                                            VXDeserializeOverrideFunc function,
                                                            const VXClientContext* context);

/**
 * Sets the function that receives the result of a scheduled call; null removes it. The context may
 * be null.
 */
BQ_EXPORT void VXMethodInvocationSetCallBack(VXMethodInvocationRef invocation,
                                             VXInvocationCallbackFunc callback,
                                             const VXClientContext* context);

/**
 * Starts the call on a run loop, in a mode. It makes progress while that run loop runs in that
 * mode, and ends with one call of the callback. The invocation must live until then; releasing it
 * earlier ends the call without a callback. After a result it may be scheduled again, which is a
 * new call.
 *
 * A call that is scheduled in several modes before it begins makes progress in each of them. It begins
 * when the run loop first runs in one of them. Scheduling it after that ends it with the fault "Timed Out
 * Waiting For Open" as long as nothing of the reply's body has arrived. An override that schedules its own
 * call and runs the loop does not enter it a second time.
 *
 * Called on the run loop's thread. A null run loop, as a thread has that is ending, has no effect.
 */
BQ_EXPORT void VXMethodInvocationScheduleWithRunLoop(VXMethodInvocationRef invocation, BQRunLoop* runLoop,
                                                     const BQString* mode);

/** Takes the invocation off a run loop's mode, in which its call then makes no progress. */
BQ_EXPORT void VXMethodInvocationUnscheduleFromRunLoop(VXMethodInvocationRef invocation, BQRunLoop* runLoop,
                                                       const BQString* mode);

/**
 * Makes the call and waits for its result, in a private mode of the calling thread's run loop, so
 * that nothing else on that run loop is served meanwhile. Replaces the callback and leaves none. A
 * scheduled call that is under way is given up for it. From inside the making of its own call, by an
 * override, an invocation cannot be invoked: the result is a fault.
 *
 * @return The result dictionary, owned by the caller; never null for an invocation. There is no
 *         time limit unless kVXMethodInvocationTimeoutValue sets one. A thread whose run loop is gone,
 *         as it may be for functions of `atexit`, gets a fault.
 */
BQ_EXPORT const BQDictionary* VXMethodInvocationInvoke(VXMethodInvocationRef invocation);

/**
 * Writes the invocation as an XML property list: a dictionary of the protocol (under the key
 * "ProtocolType"), the method name ("MethodName"), the endpoint's text ("ServiceURL"), the
 * parameters ("ParamValues") with their order ("ParamOrder") and the properties ("Properties").
 * The callback and the overrides are not part of it.
 *
 * @return The bytes, owned by the caller; null if a parameter or property is no property-list value.
 */
BQ_EXPORT const BQData* VXMethodInvocationCopySerialization(VXMethodInvocationRef invocation);

/**
 * Makes an invocation from bytes that VXMethodInvocationCopySerialization wrote. Any bytes are
 * safe.
 *
 * @return The invocation, owned by the caller; null if the bytes are no serialized invocation.
 */
BQ_EXPORT VXMethodInvocationRef VXMethodInvocationCreateFromSerialization(const BQData* data);

/** Whether a result dictionary is a fault. False for null, which no call gives. */
BQ_EXPORT bool VXMethodResultIsFault(const BQDictionary* result);

/** How a call ended. */
typedef enum VXResultOutcome {
  /** There is no result: null. */
  kVXResultOutcomeNone = 0,
  /** The reply is no fault. kVXMethodInvocationResult has what the method returned, if it returned anything.
   */
  kVXResultOutcomeValue = 1,
  /** The server answered with a fault: kVXFaultCode and kVXFaultString say which. */
  kVXResultOutcomeServerFault = 2,
  /** No request was made or sent: a URL or a value that cannot be used, or a call that was given up. */
  kVXResultOutcomeNotSent = 3,
  /** The exchange failed: the name, the connection, TLS, the proxy, HTTP itself. */
  kVXResultOutcomeTransport = 4,
  /** The time limit was over before the reply was there. */
  kVXResultOutcomeTimedOut = 5,
  /** A reply came, but is no answer: its status, its content type, or its document. */
  kVXResultOutcomeUnusableReply = 6
} VXResultOutcome;

/** How the call of a result dictionary ended. All but the first two are faults. */
BQ_EXPORT VXResultOutcome VXMethodResultGetOutcome(const BQDictionary* result);

/**
 * What a result dictionary says, for people: the description of the result, the code and string of
 * the server's fault, or a sentence on what kept the call from an answer.
 *
 * @return The text, owned by the caller; never null.
 */
BQ_EXPORT const BQString* VXMethodResultCopyDescription(const BQDictionary* result);

BQ_EXTERN_C_END

#endif
