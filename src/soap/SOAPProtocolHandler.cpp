#include "soap/SOAPProtocolHandler.h"

#include <BQ/BQString.h>
#include <VX/VXConstants.h>

#include "xml/ElementWalk.h"
#include "xml/QualifiedName.h"

namespace vx {

SOAPProtocolHandler::SOAPProtocolHandler(const BQString* protocol)
    : protocol(retain(protocol)), generation_(generationOf(protocol)) {}

const BQString* SOAPProtocolHandler::heterogeneousArrayTypeName() const {
  return generation_ == nullptr ? nullptr : generation_->arrayItemType;
}

const BQString* SOAPProtocolHandler::dateTimeEncoding() const {
  return generation_ == nullptr ? nullptr : generation_->dateType;
}

const BQString* SOAPProtocolHandler::methodNamespace() {
  BQTypeRef property = getPropertyOfType(kVXSOAPMethodNamespaceURI, BQStringGetTypeID());
  return property != nullptr ? static_cast<const BQString*>(property) : kPlaceholderMethodNamespace;
}

NamespaceMap SOAPProtocolHandler::topNamespaces(const BQTree* tree) {
  NamespaceMap namespaces;
  xmlGetElementNamespaces(tree, &namespaces);
  if (namespaces.getValue(kDefaultNamespaceKey) == nullptr) {
    namespaces.addValue(kDefaultNamespaceKey, methodNamespace());
  }
  return namespaces;
}

}  // namespace vx
