/* Reads the elements of values in SOAP's encoding. */
#ifndef VX_SOAP_SOAP_VALUE_READER_H
#define VX_SOAP_SOAP_VALUE_READER_H

#include <BQ/BQBase.h>
#include <BQ/BQXMLNode.h>
#include <VX/VXTypes.h>

#include <string_view>
#include <unordered_map>
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
 * Reads the values of one document. A value may refer to a child of the root element by its id.
 * References to one element share its value where that cannot differ; how much hostile documents can
 * make the reader do is bounded.
 */
class SOAPValueReader {
 public:
  /* Nothing is owned. The root is the Body, the budget the message's. */
  SOAPValueReader(const BQTree* root, SOAPProtocolHandler* handler, ReferenceBudget* budget);

  /* The value of an element in the namespaces of its parent; null, and a message, if it cannot be read. */
  Owned<const void> parseSOAPType(const BQTree* element, NamespaceMap& namespaces);

  /* The same for a parameter of a request, about which overrides are asked once more. */
  Owned<const void> parseParameter(const BQTree* element, NamespaceMap& namespaces);

  /* A copy of the name of a value that does not keep the document alive; a message too if there are too many.
   */
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
    /* The text of the first child, borrowed; empty if there is none. */
    std::string_view text() const;
  };

  /* What was read through references. */
  struct Cost {
    long elements = 0;
    long text = 0;
  };

  /* The last reading of an element that was referred to. While it lasts, `cost` is that of all before it. */
  struct Reading {
    Owned<const void> value; /* null unless it can be shared */
    uint64_t namespaces;     /* their version; the value depends on them */
    size_t depth;
    uint64_t overrideCalls;
    Cost cost;
  };

  Owned<const void> readSubject(const Subject& subject);
  const BQTree* findAnchor(const BQString* reference, const NamespaceMap& namespaces);
  Owned<const void> readReference(const BQString* reference, NamespaceMap& namespaces);
  Owned<const void> share(const Reading& reading);
  Owned<const void> readByOverride(const BQTree* element, const NamespaceMap& namespaces);
  Owned<const void> readScalar(VXTypeID kind, const Subject& subject);
  Owned<const void> readBySlowPath(const BQString* typeName, const Subject& subject, VXTypeID* kind);
  Owned<const void> readSchemaType(std::string_view type, const BQString* typeName, const Subject& subject);
  Owned<const void> readFallback(const Subject& subject, VXTypeID* kind);
  Owned<const void> parseSOAPArray(const Subject& subject);
  Owned<const void> parseSOAPDictionary(const Subject& subject);
  const BQString* typeNameOf(const Subject& subject);
  size_t depth() const { return inProgress_.size() - static_cast<size_t>(references_); }
  bool enter(const BQTree* element, const NamespaceMap& namespaces);
  bool spend(Cost cost, bool isRepeated);
  bool spendOnRereading(const BQTree* element);
  bool exhaust(const BQString* message);
  bool fail(const BQString* message);

  const BQTree* const root_;
  SOAPProtocolHandler& handler_;
  ReferenceBudget& budget_;
  const bool hasOverrides_;
  AnchorTable anchors_;
  TypeCache types_;
  NameCache names_;
  std::vector<const BQTree*> inProgress_;
  std::unordered_map<const BQTree*, Reading> readings_;
  Cost cost_; /* of all that was read through references so far */
  bool isBodyCredited_ = false;
  size_t textNames_ = 0;
  /* How many of the elements in progress were reached by reference, and by a further reference. */
  int references_ = 0;
  int repeats_ = 0;
  Owned<const BQString> error_;
};

}  // namespace vx

#endif
