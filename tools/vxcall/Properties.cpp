#include "Properties.h"

#include <strings.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "Endpoint.h"
#include "Number.h"
#include "common/Text.h"
#include "common/UsageError.h"

namespace tools::vxcall {
namespace {

using Header = std::pair<std::string, std::string>;

constexpr std::string_view kTokenCharacters =
    "!#$%&'*+-.^_`|~0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

Header parseHeader(const std::string& text) {
  size_t colon = text.find(':');
  if (colon == std::string::npos || colon == 0 || text.find_first_not_of(kTokenCharacters) != colon) {
    /* The text may be a password whose name was forgotten. */
    throw UsageError("the value of --header is not a header; write NAME: VALUE");
  }
  if (text.find_first_of("\r\n") != std::string::npos) {
    throw UsageError("the header " + text.substr(0, colon) + " has a line break");
  }
  size_t first = text.find_first_not_of(" \t", colon + 1);
  size_t last = text.find_last_not_of(" \t");
  return {text.substr(0, colon), first == std::string::npos ? "" : text.substr(first, last - first + 1)};
}

/* One header per name: a header that is given again continues the first one's list. */
std::vector<Header> parseHeaders(const std::vector<std::string>& texts) {
  std::vector<Header> headers;
  for (const std::string& text : texts) {
    Header header = parseHeader(text);
    auto same = std::find_if(headers.begin(), headers.end(), [&](const Header& other) {
      return strcasecmp(other.first.c_str(), header.first.c_str()) == 0;
    });
    if (same == headers.end()) {
      headers.push_back(std::move(header));
    } else {
      same->second += ", " + header.second;
    }
  }
  return headers;
}

void setHeaders(const std::vector<std::string>& texts, const SetProperty& set) {
  if (texts.empty()) return;
  auto headers = BQAdopt(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
  for (const auto& [name, value] : parseHeaders(texts)) {
    BQDictionarySetValue(headers.get(), makeString(name).get(), makeString(value).get());
  }
  set(kVXHTTPExtraHeaders, headers.get());
}

void setText(const SetProperty& set, const BQString* key, const std::optional<std::string>& text) {
  if (text) set(key, makeString(*text).get());
}

void setDocumentProperties(const Options& options, const SetProperty& set) {
  setText(set, kVXSOAPMethodNamespaceURI, options.methodNamespace);
  setText(set, kVXMethodInvocationResultParameterName, options.resultName);
  if (options.style) {
    set(kVXSOAPBodyEncodingStyle, *options.style == "rpc" ? kVXSOAPStyleRPC : kVXSOAPStyleDoc);
  }
  if (options.soapHeaders.empty()) return;
  auto headers = BQAdopt(BQArrayCreateMutable(0));
  for (const std::string& header : options.soapHeaders) {
    BQArrayAppendValue(headers.get(), makeString(header).get());
  }
  set(kVXSOAPMessageHeaders, headers.get());
}

/* Absolute, since a saved call may be loaded in another directory. */
void setCertificateAuthority(const std::string& file, const SetProperty& set) {
  if (access(file.c_str(), R_OK) != 0) {
    throw UsageError("cannot read " + file + ": " + std::strerror(errno));
  }
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) {
    throw UsageError("cannot trust " + file + ": not a regular file");
  }
  std::filesystem::path path = std::filesystem::absolute(file, error);
  set(kVXHTTPCertificateAuthorityFile, makeString(error ? file : path.string()).get());
}

void setTransportProperties(const Options& options, const SetProperty& set) {
  setHeaders(options.headers, set);
  if (options.httpVersion) {
    set(kVXHTTPVersion, *options.httpVersion == "1.0" ? kBQHTTPVersion1_0 : kBQHTTPVersion1_1);
  }
  if (options.refusesRedirects) set(kVXHTTPFollowsRedirects, kBQBooleanFalse);
  if (options.proxy) set(kVXHTTPProxy, parseEndpoint(*options.proxy).get());
  if (options.certificateAuthority) setCertificateAuthority(*options.certificateAuthority, set);
  if (options.replyLimit) {
    set(kVXHTTPReplySizeLimit, Value::adopt(BQNumberCreate(kBQNumberSInt64Type, &*options.replyLimit)).get());
  }
  if (options.timeoutSeconds)
    set(kVXMethodInvocationTimeoutValue, makeInteger(*options.timeoutSeconds).get());
  if (!options.verbose) return;
  for (const BQString* capture :
       {kVXDebugOutgoingHeaders, kVXDebugOutgoingBody, kVXDebugIncomingHeaders, kVXDebugIncomingBody}) {
    set(capture, kBQBooleanTrue);
  }
}

}  // namespace

void setProperties(const Options& options, const SetProperty& set) {
  setDocumentProperties(options, set);
  setTransportProperties(options, set);
}

}  // namespace tools::vxcall
