/* Descriptions of objects, appended to a text. */
#ifndef BQ_OBJECT_DESCRIPTION_H
#define BQ_OBJECT_DESCRIPTION_H

#include <BQ/BQBase.h>

namespace bq {

struct MutableString;

/* Appends what "%@" inserts for an object; null stands as a text too. */
void appendFormattingDescription(MutableString* out, BQTypeRef object);

}  // namespace bq

#endif
