/* The nodes of a parsed XML document. */
#ifndef BQ_XML_NODE_H
#define BQ_XML_NODE_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** What a node is. Trees hold documents, elements, texts, CDATA sections and entity references. */
typedef enum BQXMLNodeTypeCode {
  kBQXMLNodeTypeDocument = 1,
  kBQXMLNodeTypeElement = 2,
  kBQXMLNodeTypeAttribute = 3,
  kBQXMLNodeTypeProcessingInstruction = 4,
  kBQXMLNodeTypeComment = 5,
  kBQXMLNodeTypeText = 6,
  kBQXMLNodeTypeCDATASection = 7,
  kBQXMLNodeTypeDocumentFragment = 8,
  kBQXMLNodeTypeEntity = 9,
  kBQXMLNodeTypeEntityReference = 10,
  kBQXMLNodeTypeDocumentType = 11,
  kBQXMLNodeTypeWhitespace = 12,
  kBQXMLNodeTypeNotation = 13,
  kBQXMLNodeTypeElementTypeDeclaration = 14,
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

/** For an element its BQXMLElementInfo, borrowed; null for every other node. */
BQ_EXPORT const void* BQXMLNodeGetInfoPtr(const BQXMLNode* node);

BQ_EXTERN_C_END

#endif
