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

/* The detail of a failure of the transport; null if the result is none. */
const BQDictionary* failureOf(const BQDictionary* result) {
  BQTypeRef extra = BQDictionaryGetValue(result, kVXFaultExtra);
  return BQGetTypeID(extra) == BQDictionaryGetTypeID() ? static_cast<const BQDictionary*>(extra) : nullptr;
}

BQStreamError errorOf(const BQDictionary* failure) {
  return {numberAt(failure, kVXStreamErrorDomain), numberAt(failure, kVXStreamErrorError)};
}

VXResultOutcome outcomeOf(BQStreamError error) {
  bool isReply = error.domain == kVXErrorDomainReply;
  if (isReply && error.error == kVXErrorTimedOut) return kVXResultOutcomeTimedOut;
  if (isReply && error.error == kVXErrorUnusableReply) return kVXResultOutcomeUnusableReply;
  bool isRequest = error.domain == kVXErrorDomainRequest && error.error == kVXErrorTransport;
  return isRequest ? kVXResultOutcomeNotSent : kVXResultOutcomeTransport;
}

/* The library's own errors come with a message; those of a stream have a description. */
const BQString* copyFailureDescription(const BQDictionary* failure) {
  const BQStreamError error = errorOf(failure);
  return outcomeOf(error) == kVXResultOutcomeTransport
             ? BQStreamErrorCopyDescription(error)
             : BQCopyDescription(BQDictionaryGetValue(failure, kVXStreamErrorMessage));
}

}  // namespace

bool VXMethodResultIsFault(const BQDictionary* result) {
  return BQDictionaryGetValue(result, vx::kResultIsFault) == kBQBooleanTrue;
}

VXResultOutcome VXMethodResultGetOutcome(const BQDictionary* result) {
  if (BQGetTypeID(result) != BQDictionaryGetTypeID()) return kVXResultOutcomeNone;
  if (!VXMethodResultIsFault(result)) return kVXResultOutcomeValue;
  const BQDictionary* failure = failureOf(result);
  return failure == nullptr ? kVXResultOutcomeServerFault : outcomeOf(errorOf(failure));
}

const BQString* VXMethodResultCopyDescription(const BQDictionary* result) {
  auto entry = [result](const BQString* key) { return BQDictionaryGetValue(result, key); };
  if (!VXMethodResultIsFault(result)) return BQCopyDescription(entry(kVXMethodInvocationResult));
  if (const BQDictionary* failure = failureOf(result)) return copyFailureDescription(failure);
  return BQStringCreateWithFormat(BQSTR("fault %@ of the server: %@"), entry(kVXFaultCode),
                                  entry(kVXFaultString));
}
