/* Reads the elements of values in SOAP's encoding. */
#ifndef VX_SOAP_SOAP_VALUE_READER_H
#define VX_SOAP_SOAP_VALUE_READER_H

#include <BQ/BQBase.h>
#include <BQ/BQXMLNode.h>
#include <VX/VXTypes.h>

#include <string_view>
#include <unordered_set>
#include <vector>

#include "soap/AnchorTable.h"
#include "soap/ReferenceBudget.h"
#include "soap/TypeCache.h"
#include "values/Owned.h"
#include "xml/NameCache.h"
#include "xml/NamespaceMap.h"

namespace vx {

class SOAPProtocolHandler;

/* Whether an element is marked as an array. */
bool isArray(const BQTree* element, const NamespaceMap& namespaces);

/* The first attribute of a local name in a namespace (null for any); borrowed, null if there is none. */
const BQString* getNodeAttribute(const BQTree* element, const NamespaceMap& namespaces,
                                 const BQString* namespaceURI, std::string_view localName);

/* The same in either schema instance namespace, or else in the default namespace. */
const BQString* getSoapNodeAttribute(const BQTree* element, const NamespaceMap& namespaces,
                                     std::string_view localName);

/*
 * Reads the values of one document. A value may refer to a child of the root element by its id; what
 * a hostile document does with that is bounded in depth and in number.
 */
class SOAPValueReader {
 public:
  /* Nothing is owned. The root is the Body, the budget the message's. */
  SOAPValueReader(const BQTree* root, SOAPProtocolHandler* handler, ReferenceBudget* budget);

  /* The value of an element in the namespaces of its parent; null, and a message, if it cannot be read. */
  Owned<const void> parseSOAPType(const BQTree* element, NamespaceMap& namespaces);

  /* A copy of an element's name that does not keep the document alive. */
  Owned<const BQString> copyName(const BQTree* element);

  /* The message of what failed, owned by the caller; null if nothing has. */
  const BQString* takeError() { return error_.release(); }
  bool failed() const { return error_ != nullptr; }

 private:
  /* What stands for an element: itself, or what it refers to. */
  struct Subject {
    const BQTree* element;
    NamespaceMap& namespaces;

    const BQTree* firstChild() const;
    /* The string of the first child, borrowed; "" if there is none. */
    const BQString* text() const;
  };

  Owned<const void> readSubject(const Subject& subject);
  const BQTree* findAnchor(const BQString* reference, const NamespaceMap& namespaces);
  Owned<const void> readReference(const BQString* reference, NamespaceMap& namespaces);
  Owned<const void> readByOverride(const BQTree* element, const NamespaceMap& namespaces);
  Owned<const void> readScalar(VXTypeID kind, const Subject& subject);
  Owned<const void> readBySlowPath(const BQString* typeName, const Subject& subject, VXTypeID* kind);
  Owned<const void> readSchemaType(std::string_view type, const BQString* typeName, const Subject& subject);
  Owned<const void> readFallback(const Subject& subject, VXTypeID* kind);
  Owned<const void> parseSOAPArray(const Subject& subject);
  Owned<const void> parseSOAPDictionary(const Subject& subject);
  const BQString* typeNameOf(const Subject& subject);
  bool enter(const BQTree* element);
  const BQString* spendOn(const BQTree* element);
  void fail(const BQString* message);

  const BQTree* const root_;
  SOAPProtocolHandler& handler_;
  ReferenceBudget& budget_;
  const bool hasOverrides_;
  AnchorTable anchors_;
  TypeCache types_;
  NameCache names_;
  std::vector<const BQTree*> inProgress_;
  std::unordered_set<const BQTree*> readAnchors_;
  /* How many of the elements in progress were reached by reference, and by a further reference. */
  int references_ = 0;
  int repeats_ = 0;
  Owned<const BQString> error_;
};

}  // namespace vx

#endif
