#include "transport/HTTPRequest.h"

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "api/base/WebServiceMethodInvocation.h"
#include "transport/LibraryBundle.h"
#include "values/Construction.h"
#include "values/DictIterator.h"

namespace vx {
namespace {

const BQString* getStringProperty(WebServiceMethodInvocation* invocation, const BQString* key,
                                  const BQString* fallback) {
  BQTypeRef value = invocation->getPropertyOfType(key, BQStringGetTypeID());
  return value != nullptr ? static_cast<const BQString*>(value) : fallback;
}

/* The host as a header names it: an IPv6 address in brackets, and no port. */
Owned<const BQString> copyHost(const BQURL* url) {
  auto host = own(BQURLCopyHostName(url));
  const BQRange all = {0, BQStringGetLength(host.get())};
  bool isAddress = BQStringFind(host.get(), BQSTR(":"), all, kBQCompareExact, nullptr);
  return isAddress ? own(BQStringCreateWithFormat(BQSTR("[%@]"), host.get())) : std::move(host);
}

const BQString* makeUserAgent() {
  BQBundle* bundle = BQBundleGetBundleWithIdentifier(kLibraryBundleIdentifier);
  auto info = own(BQBundleCopyInfoDictionary(bundle));
  BQTypeRef version = BQDictionaryGetValue(info.get(), kBQBundleVersionKey);
  if (version == nullptr) version = BQSTR("1.0.0");
  return BQStringCreateWithFormat(BQSTR("Harlon; Orvane.framework (%@)"), version);
}

/* False if a header cannot be sent as it is: the call must not go out without it. */
bool setExtraHeaders(WebServiceMethodInvocation* invocation, BQHTTPMessage* request) {
  BQTypeRef headers = invocation->getPropertyOfType(kVXHTTPExtraHeaders, BQDictionaryGetTypeID());
  for (DictIterator entries(static_cast<const BQDictionary*>(headers)); entries.hasNext();) {
    auto* name = static_cast<const BQString*>(entries.nextKey());
    auto* value = static_cast<const BQString*>(entries.valueFor(name));
    if (name == nullptr || value == nullptr) continue;
    if (!BQHTTPMessageSetHeaderFieldValue(request, name, value)) return false;
  }
  return true;
}

void setProxy(WebServiceMethodInvocation* invocation, BQReadStream* stream) {
  auto* proxy = static_cast<const BQURL*>(invocation->getPropertyOfType(kVXHTTPProxy, BQURLGetTypeID()));
  if (proxy == nullptr) return;
  auto host = own(BQURLCopyHostName(proxy));
  BQIndex port = BQURLGetPortNumber(proxy);
  if (port < 0) port = 80;
  auto portNumber = own(BQNumberCreate(kBQNumberIndexType, &port));
  if (portNumber == nullptr) return;
  auto settings = own(bqTypeCreateDictionary(nullptr, kBQStreamPropertyHTTPProxyPort, portNumber.get(),
                                             kBQStreamPropertyHTTPProxyHost, host.get(), nullptr));
  BQReadStreamSetProperty(stream, kBQStreamPropertyHTTPProxy, settings.get());
}

/* A number that is not above 0 sets no limit. */
void setLimit(WebServiceMethodInvocation* invocation, const BQString* key, BQReadStream* stream,
              const BQString* streamKey) {
  BQTypeRef value = invocation->getPropertyOfType(key, BQNumberGetTypeID());
  int64_t number = 0;
  BQNumberGetValue(static_cast<const BQNumber*>(value), kBQNumberSInt64Type, &number);
  if (number <= 0) return;
  auto limit = own(BQNumberCreate(kBQNumberSInt64Type, &number));
  BQReadStreamSetProperty(stream, streamKey, limit.get());
}

}  // namespace

const BQString* getUserAgentString() {
  static const BQString* const sUserAgent = makeUserAgent();
  return sUserAgent;
}

void setHeaderFieldValue(const BQHTTPMessage* requestTemplate, BQHTTPMessage* request, const BQString* name,
                         const BQString* value) {
  auto present = own(BQHTTPMessageCopyHeaderFieldValue(requestTemplate, name));
  if (present == nullptr) BQHTTPMessageSetHeaderFieldValue(request, name, value);
}

const BQString* getMethod(WebServiceMethodInvocation* invocation) {
  return getStringProperty(invocation, kVXPostingMethod, BQSTR("POST"));
}

const BQString* getHttpVersion(WebServiceMethodInvocation* invocation) {
  return getStringProperty(invocation, kVXHTTPVersion, kBQHTTPVersion1_1);
}

bool getFollowsRedirects(WebServiceMethodInvocation* invocation) {
  BQTypeRef value = invocation->getProperty(kVXHTTPFollowsRedirects);
  return value == nullptr || BQEqual(value, kBQBooleanTrue);
}

int32_t getTimeout(WebServiceMethodInvocation* invocation) {
  int32_t seconds = 0;
  BQTypeRef value = invocation->getPropertyOfType(kVXMethodInvocationTimeoutValue, BQNumberGetTypeID());
  BQNumberGetValue(static_cast<const BQNumber*>(value), kBQNumberSInt32Type, &seconds);
  return seconds;
}

Owned<BQHTTPMessage> createHTTPRequest(WebServiceMethodInvocation* invocation, const BQURL* url,
                                       const BQData* body, const BQString* contentType) {
  auto* requestTemplate = static_cast<const BQHTTPMessage*>(
      invocation->getPropertyOfType(kVXHTTPMessage, BQHTTPMessageGetTypeID()));
  auto request = own(requestTemplate != nullptr ? BQHTTPMessageCreateCopy(requestTemplate)
                                                : BQHTTPMessageCreateRequest(getMethod(invocation), url,
                                                                             getHttpVersion(invocation)));
  if (request == nullptr) return nullptr;
  BQHTTPMessageSetBody(request.get(), body);
  auto host = copyHost(url);
  setHeaderFieldValue(requestTemplate, request.get(), BQSTR("User-Agent"), getUserAgentString());
  setHeaderFieldValue(requestTemplate, request.get(), BQSTR("Host"), host.get());
  setHeaderFieldValue(requestTemplate, request.get(), BQSTR("Content-Type"),
                      contentType != nullptr ? contentType : BQSTR("text/xml"));
  return setExtraHeaders(invocation, request.get()) ? std::move(request) : nullptr;
}

void configureStream(WebServiceMethodInvocation* invocation, BQReadStream* stream) {
  setProxy(invocation, stream);
  BQReadStreamSetProperty(stream, kBQStreamPropertyHTTPShouldAutoredirect,
                          getFollowsRedirects(invocation) ? kBQBooleanTrue : kBQBooleanFalse);
  BQReadStreamSetProperty(
      stream, kBQStreamPropertyTLSCertificateAuthorityFile,
      invocation->getPropertyOfType(kVXHTTPCertificateAuthorityFile, BQStringGetTypeID()));
  setLimit(invocation, kVXHTTPReplySizeLimit, stream, kBQStreamPropertyHTTPMaximumReplySize);
  setLimit(invocation, kVXHTTPConnectionLimit, stream, kBQStreamPropertyHTTPConnectionLimit);
}

}  // namespace vx
