#include "api/base/RequestKeys.h"

#include <BQ/BQString.h>

namespace vx {
namespace {

BQ_DEFINE_STATIC_STRING(textEncoding, "/VXTextEncoding");
BQ_DEFINE_STATIC_STRING(methodName, "/VXMethodName");
BQ_DEFINE_STATIC_STRING(methodParameters, "/VXMethodParameters");
BQ_DEFINE_STATIC_STRING(methodParameterOrder, "/VXMethodParameterOrder");

}  // namespace

const BQString* const kRequestTextEncoding = textEncoding;
const BQString* const kRequestMethodName = methodName;
const BQString* const kRequestMethodParameters = methodParameters;
const BQString* const kRequestMethodParameterOrder = methodParameterOrder;

}  // namespace vx
