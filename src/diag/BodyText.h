/* A message body as readable text. */
#ifndef VX_DIAG_BODY_TEXT_H
#define VX_DIAG_BODY_TEXT_H

#include <BQ/BQBase.h>

namespace vx {

/*
 * The text of a body in an encoding, carriage returns turned into line feeds; read as ISO Latin-1
 * if it is malformed in that encoding. Owned by the caller; never null for a body.
 */
const BQString* prettyPrintXML(const BQData* data, unsigned long encoding);

}  // namespace vx

#endif
