/* The nodes of a parsed XML document. */
#ifndef BQ_XML_NODE_H
#define BQ_XML_NODE_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** What a node is. Trees hold documents, elements, texts, CDATA sections and entity references. */
typedef enum BQXMLNodeTypeCode {
  /** A document: the root of a tree. */
  kBQXMLNodeTypeDocument = 1,
  /** An element. */
  kBQXMLNodeTypeElement = 2,
  /** An attribute; not in trees. */
  kBQXMLNodeTypeAttribute = 3,
  /** A processing instruction; not in trees. */
  kBQXMLNodeTypeProcessingInstruction = 4,
  /** A comment; not in trees. */
  kBQXMLNodeTypeComment = 5,
  /** A text. */
  kBQXMLNodeTypeText = 6,
  /** A CDATA section. */
  kBQXMLNodeTypeCDATASection = 7,
  /** A part of a document; not in trees. */
  kBQXMLNodeTypeDocumentFragment = 8,
  /** An entity; not in trees. */
  kBQXMLNodeTypeEntity = 9,
  /** A reference to an entity that XML does not define itself. */
  kBQXMLNodeTypeEntityReference = 10,
  /** A document type; not in trees. */
  kBQXMLNodeTypeDocumentType = 11,
  /** White space between tags; not in trees. */
  kBQXMLNodeTypeWhitespace = 12,
  /** A notation; not in trees. */
  kBQXMLNodeTypeNotation = 13,
  /** The declaration of an element; not in trees. */
  kBQXMLNodeTypeElementTypeDeclaration = 14,
  /** The declaration of attributes; not in trees. */
  kBQXMLNodeTypeAttributeListDeclaration = 15
} BQXMLNodeTypeCode;

/** What an element node carries besides its name. Both are null for an element without attributes. */
typedef struct BQXMLElementInfo {
  /** Attribute name as written to value. */
  const BQDictionary* attributes;
  /** The attribute names in document order. */
  const BQArray* attributeOrder;
} BQXMLElementInfo;

/** The identifier of the node class. */
BQ_EXPORT BQTypeID BQXMLNodeGetTypeID(void);

/** What the node is. 0 for null. */
BQ_EXPORT BQXMLNodeTypeCode BQXMLNodeGetTypeCode(const BQXMLNode* node);

/**
 * The name of an element as written, the text of a text or CDATA node, the name of an entity
 * reference; borrowed.
 */
BQ_EXPORT const BQString* BQXMLNodeGetString(const BQXMLNode* node);

/**
 * The bytes of that string, borrowed and without a NUL after them, and in `*length`, which may be null, their
 * number. Takes no memory, whereas a document makes the string of a short text when it is first asked for.
 */
BQ_EXPORT const char* BQXMLNodeGetUTF8(const BQXMLNode* node, BQIndex* length);

/** For an element its BQXMLElementInfo, borrowed; null for every other node. */
BQ_EXPORT const void* BQXMLNodeGetInfoPtr(const BQXMLNode* node);

/** The number of attributes of an element; 0 for every other node. */
BQ_EXPORT BQIndex BQXMLNodeGetAttributeCount(const BQXMLNode* node);

/**
 * The name of an attribute of an element, in document order, and in `*value`, which may be null, its value.
 * Both are borrowed, and null if there is none at that index. Takes no memory, unlike BQXMLNodeGetInfoPtr.
 */
BQ_EXPORT const BQString* BQXMLNodeGetAttributeAtIndex(const BQXMLNode* node, BQIndex index,
                                                       const BQString** value);

BQ_EXTERN_C_END

#endif
