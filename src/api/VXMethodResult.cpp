#include <VX/VXMethodInvocation.h>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "transport/WebServiceResult.h"
#include "values/Owned.h"

namespace {

int32_t numberAt(const BQDictionary* dictionary, const BQString* key) {
  int32_t value = 0;
  BQNumberGetValue(static_cast<const BQNumber*>(BQDictionaryGetValue(dictionary, key)), kBQNumberSInt32Type,
                   &value);
  return value;
}

/* The library's own errors come with a message; those of a stream have a description. */
const BQString* copyFailureDescription(const BQDictionary* failure) {
  BQStreamError error = {numberAt(failure, kVXStreamErrorDomain), numberAt(failure, kVXStreamErrorError)};
  bool isOurs = error.error >= vx::kErrorTimedOut && error.error <= vx::kErrorTransport;
  return isOurs ? BQCopyDescription(BQDictionaryGetValue(failure, kVXStreamErrorMessage))
                : BQStreamErrorCopyDescription(error);
}

}  // namespace

bool VXMethodResultIsFault(const BQDictionary* result) {
  return BQDictionaryGetValue(result, vx::kResultIsFault) == kBQBooleanTrue;
}

const BQString* VXMethodResultCopyDescription(const BQDictionary* result) {
  auto entry = [result](const BQString* key) { return BQDictionaryGetValue(result, key); };
  if (!VXMethodResultIsFault(result)) return BQCopyDescription(entry(kVXMethodInvocationResult));
  BQTypeRef extra = entry(kVXFaultExtra);
  if (BQGetTypeID(extra) == BQDictionaryGetTypeID()) {
    return copyFailureDescription(static_cast<const BQDictionary*>(extra));
  }
  return BQStringCreateWithFormat(BQSTR("fault %@ of the server: %@"), entry(kVXFaultCode),
                                  entry(kVXFaultString));
}
