#include "Failure.h"

#include <cctype>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "common/Text.h"

namespace tools::vxcall {
namespace {

/* The library's own codes; see VXConstants.h. */
constexpr int32_t kTransportFault = -65794;
constexpr int32_t kUnusableReply = -65795;
constexpr int32_t kTimedOut = -65796;
constexpr BQStreamErrorDomain kMessageDomain = 2;

int32_t integerAt(const BQDictionary* dictionary, const BQString* key) {
  int32_t value = 0;
  auto number = static_cast<const BQNumber*>(BQDictionaryGetValue(dictionary, key));
  BQNumberGetValue(number, kBQNumberSInt32Type, &value);
  return value;
}

const BQDictionary* extraOf(const BQDictionary* fault) {
  BQTypeRef extra = BQDictionaryGetValue(fault, kVXFaultExtra);
  return BQGetTypeID(extra) == BQDictionaryGetTypeID() ? static_cast<const BQDictionary*>(extra) : nullptr;
}

/* A sentence's beginning in the middle of another one; abbreviations keep their capitals. */
std::string continued(std::string sentence) {
  if (sentence.size() > 1 && std::islower(static_cast<unsigned char>(sentence[1]))) {
    sentence[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(sentence[0])));
  }
  return sentence;
}

std::string describeStreamError(BQStreamError error, const std::string& url) {
  auto description = Ref<const BQString>::adopt(BQStreamErrorCopyDescription(error));
  std::string reason = continued(std::string(textOf(description.get())));
  switch (error.domain) {
    case kBQStreamErrorDomainPOSIX:
    case kBQStreamErrorDomainResolver:
      return "cannot reach " + url + ": " + reason;
    case kBQStreamErrorDomainTLS:
      return "no secure connection to " + url + ": " + reason;
    default:
      return "the call of " + url + " failed: " + reason;
  }
}

std::string describeUnusableReply(const std::string& message, const std::string& url) {
  if (message.starts_with("HTTP/")) return url + " answered with the status " + message;
  return "the reply of " + url + " is not usable: " + message;
}

std::string describeTimeout(int seconds, const std::string& url) {
  return "timed out: " + url + " did not answer within " + std::to_string(seconds) +
         (seconds == 1 ? " second" : " seconds");
}

}  // namespace

bool isTransportFailure(const BQDictionary* fault) {
  return textOf(BQDictionaryGetValue(fault, kVXFaultString)) == textOf(kVXNetworkStreamFaultString) &&
         integerAt(fault, kVXFaultCode) == kTransportFault && extraOf(fault) != nullptr;
}

std::string describeTransportFailure(const BQDictionary* failure, const Options& options) {
  const BQDictionary* extra = extraOf(failure);
  std::string message(textOf(BQDictionaryGetValue(extra, kVXStreamErrorMessage)));
  BQStreamError error = {integerAt(extra, kVXStreamErrorDomain), integerAt(extra, kVXStreamErrorError)};
  std::string line;
  if (error.domain == kBQStreamErrorDomainCustom && error.error == kTimedOut) {
    line = describeTimeout(options.timeoutSeconds, options.url);
  } else if (error.domain == kBQStreamErrorDomainCustom && error.error == kUnusableReply) {
    line = describeUnusableReply(message, options.url);
  } else if (error.domain == kMessageDomain) {
    line = "the call of " + options.url + " failed: " + continued(message);
  } else {
    line = describeStreamError(error, options.url);
  }
  return singleLine(line);
}

std::string describeServerFault(const BQDictionary* fault) {
  std::string_view text = textOf(BQDictionaryGetValue(fault, kVXFaultString));
  std::string line = "fault " + std::to_string(integerAt(fault, kVXFaultCode));
  if (!text.empty()) line += ": " + singleLine(text);
  return line;
}

}  // namespace tools::vxcall
