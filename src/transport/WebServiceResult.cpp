#include "transport/WebServiceResult.h"

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "values/Construction.h"

namespace vx {
namespace {

Owned<const BQNumber> makeNumber(BQNumberType type, long value) {
  auto integer = static_cast<int32_t>(value);
  return own(BQNumberCreate(type, &integer));
}

}  // namespace

BQ_DEFINE_STRING(kResultIsFault, "/kVXResultIsFault");

BQDictionary* copyStreamErrorDict(const BQString* message, BQStreamErrorDomain domain, long error) {
  auto errorNumber = makeNumber(kBQNumberSInt32Type, error);
  auto domainNumber = makeNumber(kBQNumberIntType, domain);
  return bqTypeCreateDictionary(nullptr, kVXStreamErrorMessage, message, kVXStreamErrorDomain,
                                domainNumber.get(), kVXStreamErrorError, errorNumber.get(), nullptr);
}

WebServiceResult::WebServiceResult()
    : resultDictionary(own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys))) {}

void WebServiceResult::addNumberToResult(const BQString* key, long value) {
  BQDictionarySetValue(resultDictionary.get(), key, makeNumber(kBQNumberSInt32Type, value).get());
}

void WebServiceResult::markFault(const BQString* faultString, long faultCode) {
  BQDictionarySetValue(resultDictionary.get(), kResultIsFault, kBQBooleanTrue);
  BQDictionarySetValue(resultDictionary.get(), kVXFaultString, faultString);
  addNumberToResult(kVXFaultCode, faultCode);
}

void WebServiceResult::becomeTransportFault(const BQString* message, BQStreamError error) {
  markFault(kVXNetworkStreamFaultString, kVXErrorTransport);
  BQDictionarySetValue(resultDictionary.get(), kVXFaultExtra,
                       own(copyStreamErrorDict(message, error.domain, error.error)).get());
}

void WebServiceResult::becomeFault(const BQString* faultString, long faultCode, const BQData* extra,
                                   unsigned long encoding) {
  markFault(faultString, faultCode);
  if (extra == nullptr) return;
  auto text = own(BQStringCreateFromExternalRepresentation(extra, static_cast<BQStringEncoding>(encoding)));
  BQDictionarySetValue(resultDictionary.get(), kVXFaultExtra, text.get());
}

void WebServiceResult::becomeFault(const BQStreamError& error) {
  becomeTransportFault(BQSTR("Stream Error"), error);
}

void WebServiceResult::becomeFault(const BQString* message) {
  becomeTransportFault(message, {kVXErrorDomainRequest, kVXErrorTransport});
}

void WebServiceResult::becomeFault(const BQString* message, BQStreamError error) {
  becomeTransportFault(message, error);
}

}  // namespace vx
