#include "Failure.h"

#include <cctype>
#include <cerrno>

#include <algorithm>
#include <vector>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "common/Text.h"
#include "common/Value.h"

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

bool is(BQStreamError error, BQStreamErrorDomain domain, int32_t number) {
  return error.domain == domain && error.error == number;
}

/* What the user can do about an error of the connection, or nothing. */
std::string_view adviceFor(BQStreamError error) {
  if (is(error, kBQStreamErrorDomainPOSIX, ECONNREFUSED))
    return "; is the server running, and is this its port?";
  if (error.domain == kBQStreamErrorDomainResolver) return "; is the name right?";
  if (is(error, kBQStreamErrorDomainTLS, kBQStreamTLSErrorHandshake)) return "; does the server speak https?";
  if (error.domain == kBQStreamErrorDomainTLS) return "; --ca FILE names authorities to trust";
  if (is(error, kBQStreamErrorDomainHTTP, kBQStreamHTTPErrorReplyTooLarge))
    return "; --max-reply BYTES sets it";
  return "";
}

/* Whom the call connects to. */
std::string peerOf(const Invocation& invocation) {
  auto proxy = Value::adopt(VXMethodInvocationCopyProperty(invocation.handle.get(), kVXHTTPProxy));
  if (!proxy) return maskURL(invocation.url);
  return "the proxy " + maskURL(textOf(BQURLGetString(static_cast<const BQURL*>(proxy.get()))));
}

std::string describeStreamError(BQStreamError error, const Invocation& invocation) {
  const std::string url = maskURL(invocation.url);
  auto description = BQAdopt(BQStreamErrorCopyDescription(error));
  std::string reason = continued(std::string(textOf(description.get()))).append(adviceFor(error));
  switch (error.domain) {
    case kBQStreamErrorDomainPOSIX:
    case kBQStreamErrorDomainResolver:
      return "cannot reach " + peerOf(invocation) + ": " + reason;
    case kBQStreamErrorDomainTLS:
      return "no secure connection to " + url + ": " + reason;
    default:
      return "the call of " + url + " failed: " + reason;
  }
}

/* What the user can do about a status line, or nothing. */
std::string_view adviceFor(std::string_view statusLine) {
  std::string_view status = statusLine.substr(std::min(statusLine.size(), statusLine.find(' ') + 1), 3);
  if (status.starts_with('3')) return "; without --no-redirect it would be followed";
  if (status == "401" || status == "403") return "; --header 'Authorization: ...' sends credentials";
  if (status == "404" || status == "405") return "; is the path of the URL right?";
  return "";
}

/*
 * The elements of a SOAP reply, the first ones of many. In the result they stand beside the library's own
 * entries, all of which begin with a slash.
 */
std::string elementsOf(const BQDictionary* result) {
  constexpr int kMostShown = 10;
  auto count = static_cast<size_t>(BQDictionaryGetCount(result));
  std::vector<BQTypeRef> names(count), values(count);
  BQDictionaryGetKeysAndValues(result, names.data(), values.data());
  std::string elements;
  int shown = 0;
  for (BQTypeRef name : names) {
    if (textOf(name).starts_with('/')) continue;
    if (++shown > kMostShown) return elements + ", ...";
    elements.append(elements.empty() ? "" : ", ").append(shortened(textOf(name)));
  }
  return elements;
}

/* Advice on a reply that lacks the element that --result names, or nothing if it was not that. */
std::string adviceOnResult(const std::string& message, const BQDictionary* failure) {
  if (!message.starts_with("Can't find method result parameter")) return "";
  std::string elements = elementsOf(failure);
  return elements.empty() ? "; try without --result" : "; it has " + elements;
}

std::string describeUnusableReply(const std::string& message, const std::string& url,
                                  const BQDictionary* failure) {
  if (message.starts_with("HTTP/")) {
    return (url + " answered with the status " + message).append(adviceFor(message));
  }
  std::string advice = adviceOnResult(message, failure);
  return "the reply of " + url + " is not usable: " + message +
         (advice.empty() ? "; --verbose shows it" : advice);
}

std::string describeTimeout(const Invocation& invocation) {
  auto limit =
      Value::adopt(VXMethodInvocationCopyProperty(invocation.handle.get(), kVXMethodInvocationTimeoutValue));
  int32_t seconds = 0;
  BQNumberGetValue(static_cast<const BQNumber*>(limit.get()), kBQNumberSInt32Type, &seconds);
  return "timed out: " + maskURL(invocation.url) + " did not answer within " + std::to_string(seconds) +
         (seconds == 1 ? " second" : " seconds") + "; --timeout SECONDS sets the limit";
}

}  // namespace

bool isTransportFailure(const BQDictionary* fault) {
  return textOf(BQDictionaryGetValue(fault, kVXFaultString)) == textOf(kVXNetworkStreamFaultString) &&
         integerAt(fault, kVXFaultCode) == kTransportFault && extraOf(fault) != nullptr;
}

std::string describeTransportFailure(const BQDictionary* failure, const Invocation& invocation) {
  const BQDictionary* extra = extraOf(failure);
  std::string message(textOf(BQDictionaryGetValue(extra, kVXStreamErrorMessage)));
  BQStreamError error = {integerAt(extra, kVXStreamErrorDomain), integerAt(extra, kVXStreamErrorError)};
  std::string line;
  if (is(error, kBQStreamErrorDomainCustom, kTimedOut)) {
    line = describeTimeout(invocation);
  } else if (is(error, kBQStreamErrorDomainCustom, kUnusableReply)) {
    line = describeUnusableReply(message, maskURL(invocation.url), failure);
  } else if (error.domain == kMessageDomain) {
    line = "the call of " + maskURL(invocation.url) + " failed: " + continued(message);
  } else {
    line = describeStreamError(error, invocation);
  }
  return line;
}

/* In XML-RPC an empty string arrives like that. */
bool holdsNoAnswer(const BQDictionary* result, const Invocation& invocation) {
  return invocation.protocol != kVXXMLRPCProtocol &&
         BQDictionaryGetValue(result, kVXMethodInvocationResult) == nullptr;
}

std::string describeMissingAnswer(const Invocation& invocation) {
  return "the reply of " + maskURL(invocation.url) +
         " is no answer to a SOAP call; is the path of the URL right? --verbose shows it";
}

std::string describeServerFault(const BQDictionary* fault) {
  std::string_view text = textOf(BQDictionaryGetValue(fault, kVXFaultString));
  std::string line = "fault " + std::to_string(integerAt(fault, kVXFaultCode));
  if (!text.empty()) line.append(": ").append(text);
  return line;
}

}  // namespace tools::vxcall
