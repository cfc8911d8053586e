/* From the bytes of a document to its tree. */
#ifndef VX_XML_PARSING_H
#define VX_XML_PARSING_H

#include <BQ/BQBase.h>

namespace vx {

/*
 * Parses a document. What stands before its XML declaration is dropped; without a declaration it
 * is read in `encoding` if `allowMissingDeclaration` is not 0, and refused if it is.
 *
 * Returns the tree, owned by the caller; or null, and in `*outError` a message, owned by the caller.
 */
const BQTree* parseXML(const BQData* data, unsigned char allowMissingDeclaration, unsigned long encoding,
                       const BQString** outError);

}  // namespace vx

#endif
