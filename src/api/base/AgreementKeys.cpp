#include "api/base/AgreementKeys.h"

#include <BQ/BQString.h>

namespace vx {
namespace {

BQ_DEFINE_STATIC_STRING(protocolType, "ProtocolType");
BQ_DEFINE_STATIC_STRING(methodName, "MethodName");
BQ_DEFINE_STATIC_STRING(serviceURL, "ServiceURL");
BQ_DEFINE_STATIC_STRING(paramOrder, "ParamOrder");
BQ_DEFINE_STATIC_STRING(paramValues, "ParamValues");
BQ_DEFINE_STATIC_STRING(properties, "Properties");

}  // namespace

const BQString* const kAgreementProtocolType = protocolType;
const BQString* const kAgreementMethodName = methodName;
const BQString* const kAgreementServiceURL = serviceURL;
const BQString* const kAgreementParamOrder = paramOrder;
const BQString* const kAgreementParamValues = paramValues;
const BQString* const kAgreementProperties = properties;

}  // namespace vx
