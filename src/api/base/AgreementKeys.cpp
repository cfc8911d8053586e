#include "api/base/AgreementKeys.h"

#include <BQ/BQString.h>

namespace vx {

BQ_DEFINE_STRING(kAgreementProtocolType, "ProtocolType");
BQ_DEFINE_STRING(kAgreementMethodName, "MethodName");
BQ_DEFINE_STRING(kAgreementServiceURL, "ServiceURL");
BQ_DEFINE_STRING(kAgreementParamOrder, "ParamOrder");
BQ_DEFINE_STRING(kAgreementParamValues, "ParamValues");
BQ_DEFINE_STRING(kAgreementProperties, "Properties");

}  // namespace vx
