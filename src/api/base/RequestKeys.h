/* The keys of a request dictionary. */
#ifndef VX_API_BASE_REQUEST_KEYS_H
#define VX_API_BASE_REQUEST_KEYS_H

#include <BQ/BQBase.h>

namespace vx {

extern const BQString* const kRequestTextEncoding;         /* "/VXTextEncoding" */
extern const BQString* const kRequestMethodName;           /* "/VXMethodName" */
extern const BQString* const kRequestMethodParameters;     /* "/VXMethodParameters" */
extern const BQString* const kRequestMethodParameterOrder; /* "/VXMethodParameterOrder" */

}  // namespace vx

#endif
