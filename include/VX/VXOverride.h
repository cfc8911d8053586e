/* Functions by which a caller writes and reads values in a form of its own. */
#ifndef VX_OVERRIDE_H
#define VX_OVERRIDE_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** A method invocation: VXMethodInvocation.h. */
typedef struct OpaqueVXMethodInvocationRef* VXMethodInvocationRef;

/**
 * Writes a value. Called while a document is written, with every value of the class that it was
 * registered for; the first one registered for a class is the one that is called.
 *
 * @param object  The invocation on which the function was registered, or the protocol handler: then it is
 *                to be cast to a VXProtocolHandlerRef; borrowed.
 * @param value   The value to write; borrowed.
 * @param info    The context's info.
 * @return The XML text to put in place of the library's own, not escaped any further, owned by the
 *         library from then on; null to let the library write the value. XML-RPC puts it between
 *         the lines of the value element. SOAP takes it for the whole element and puts the
 *         element's name in place of each "%@".
 */
typedef const BQString* (*VXSerializeOverrideFunc)(VXMethodInvocationRef object, BQTypeRef value, void* info);

/**
 * Reads a SOAP element. Called while a document is read, with every element whose resolved name
 * matches; the first one registered that matches is the one that is called. It can be called more than
 * once for an element: after it returned null, and each time that a reference leads to what holds the
 * element.
 *
 * @param object   As above; borrowed.
 * @param element  The element; borrowed.
 * @param root     The body of the document, among whose elements references lead; borrowed.
 * @param info     The context's info.
 * @return The value, owned by the library from then on; null to let the library read the element.
 */
typedef BQTypeRef (*VXDeserializeOverrideFunc)(VXMethodInvocationRef object, const BQTree* element,
                                               const BQTree* root, void* info);

BQ_EXTERN_C_END

#endif
