#include "api/base/RequestKeys.h"

#include "values/ConstantString.h"

namespace vx {

VX_DEFINE_STRING(kRequestTextEncoding, "/VXTextEncoding");
VX_DEFINE_STRING(kRequestMethodName, "/VXMethodName");
VX_DEFINE_STRING(kRequestMethodParameters, "/VXMethodParameters");
VX_DEFINE_STRING(kRequestMethodParameterOrder, "/VXMethodParameterOrder");

}  // namespace vx
