#include "api/base/RequestKeys.h"

#include <BQ/BQString.h>

namespace vx {

BQ_DEFINE_STRING(kRequestTextEncoding, "/VXTextEncoding");
BQ_DEFINE_STRING(kRequestMethodName, "/VXMethodName");
BQ_DEFINE_STRING(kRequestMethodParameters, "/VXMethodParameters");
BQ_DEFINE_STRING(kRequestMethodParameterOrder, "/VXMethodParameterOrder");

}  // namespace vx
