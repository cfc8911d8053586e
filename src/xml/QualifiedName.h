/*
 * Qualified names. A fully qualified name is a namespace, a vertical bar, and a local name.
 */
#ifndef VX_XML_QUALIFIED_NAME_H
#define VX_XML_QUALIFIED_NAME_H

#include "values/AutoString.h"
#include "xml/NamespaceMap.h"

namespace vx {

/* The key of the default namespace in a namespace map. */
extern const BQString* const kDefaultNamespaceKey;

/* Splits a fully qualified name; both parts are owned by the caller. The namespace is "" without a bar. */
void xmlBurstFullyQualifiedName(const BQString* name, const BQString** outNamespace,
                                const BQString** outLocalName);

/*
 * Resolves a prefixed name; both parts are owned by the caller. The namespace is null if the prefix
 * is not declared, or without a prefix if there is no default namespace.
 */
void xmlNamespaceQualify(const NamespaceMap& namespaces, const BQString* qualifiedName,
                         const BQString** outNamespace, const BQString** outLocalName);

/* Replaces a prefixed name by the fully qualified one, if its namespace is known. */
void fullyQualify(AutoString& name, const NamespaceMap& namespaces);

}  // namespace vx

#endif
