/* Trees that keep the white space of elements without children, for documents in which it counts. */
#ifndef BQ_XML_LEAF_TEXT_H
#define BQ_XML_LEAF_TEXT_H

#include <BQ/BQXMLParser.h>

namespace bq {

/*
 * As BQXMLTreeCreateFromDataWithError. With `keepsLeafText`, text of white space alone is kept beside CDATA
 * sections and where an element holds nothing else.
 */
const BQTree* createTree(const BQData* data, bool keepsLeafText, const BQDictionary** error);

}  // namespace bq

#endif
