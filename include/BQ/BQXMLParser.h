/* The XML parser (XML 1.0). */
#ifndef BQ_XML_PARSER_H
#define BQ_XML_PARSER_H

#include <BQ/BQBase.h>

BQ_EXTERN_C_BEGIN

/** Keys of the error dictionary: a string that says what is wrong. */
BQ_EXPORT extern const BQString* const kBQXMLTreeErrorDescription;
/** A number: the line, from 1. */
BQ_EXPORT extern const BQString* const kBQXMLTreeErrorLineNumber;
/** A number: the position in bytes from 0 in the data, or in its UTF-8 form if it is in another encoding. */
BQ_EXPORT extern const BQString* const kBQXMLTreeErrorLocation;
/** A number: one of BQXMLTreeStatus. */
BQ_EXPORT extern const BQString* const kBQXMLTreeErrorStatusCode;

/** Why a document does not parse. Codes below 1000 are the XML parser's own. */
typedef enum BQXMLTreeStatus {
  /** Elements are nested deeper than 512 levels. */
  kBQXMLTreeStatusTooDeep = 1001,
  /**
   * The encoding is not known, or the bytes are malformed in it, contain NUL, or begin with two
   * byte-order marks.
   */
  kBQXMLTreeStatusBadEncoding = 1002
} BQXMLTreeStatus;

/**
 * Parses a document in the encoding that its byte-order mark, its first bytes (UTF-16, UTF-32 and
 * EBCDIC) or its declaration shows (UTF-8 without any). The tree, owned by the caller, holds elements,
 * texts, CDATA sections and entity references; comments, processing instructions and the document type
 * are dropped, as is text of white space alone between tags and CDATA sections. Predefined entities and
 * character references arrive decoded. No entity is ever expanded and nothing is ever loaded: a
 * reference in an attribute value stays as it is written, "&name;". Attributes that only the document
 * type supplies are left out.
 *
 * Null if the document is not well-formed or `data` is null; then `*error`, if asked for, is a
 * dictionary with the keys above, owned by the caller. Any thread.
 */
BQ_EXPORT const BQTree* BQXMLTreeCreateFromDataWithError(const BQData* data, const BQDictionary** error);

BQ_EXTERN_C_END

#endif
