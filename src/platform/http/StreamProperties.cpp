#include "platform/http/StreamProperties.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include <BQ/BQBoolean.h>
#include <BQ/BQDictionary.h>
#include <BQ/BQNumber.h>
#include <BQ/BQReadStream.h>
#include <BQ/BQString.h>
#include <BQ/BQURL.h>

#include "platform/http/Text.h"

BQ_DEFINE_STRING(kBQStreamPropertyHTTPProxy, "kBQStreamPropertyHTTPProxy");
BQ_DEFINE_STRING(kBQStreamPropertyHTTPProxyHost, "kBQStreamPropertyHTTPProxyHost");
BQ_DEFINE_STRING(kBQStreamPropertyHTTPProxyPort, "kBQStreamPropertyHTTPProxyPort");
BQ_DEFINE_STRING(kBQStreamPropertyHTTPShouldAutoredirect, "kBQStreamPropertyHTTPShouldAutoredirect");
BQ_DEFINE_STRING(kBQStreamPropertyHTTPResponseHeader, "kBQStreamPropertyHTTPResponseHeader");
BQ_DEFINE_STRING(kBQStreamPropertyHTTPMaximumReplySize, "kBQStreamPropertyHTTPMaximumReplySize");
BQ_DEFINE_STRING(kBQStreamPropertyHTTPConnectionLimit, "kBQStreamPropertyHTTPConnectionLimit");
BQ_DEFINE_STRING(kBQStreamPropertyTLSVerifyPeer, "kBQStreamPropertyTLSVerifyPeer");
BQ_DEFINE_STRING(kBQStreamPropertyTLSCertificateAuthorityFile,
                 "kBQStreamPropertyTLSCertificateAuthorityFile");

namespace bq {
namespace {

constexpr int64_t kDefaultProxyPort = 80;
constexpr off_t kLargestAuthorityFile = off_t{16} << 20;
constexpr BQStreamError kUnusable = {kBQStreamErrorDomainPOSIX, EINVAL};

bool isUsableHost(std::string_view host) {
  return !host.empty() && host.find_first_of("/?#@") == std::string_view::npos;
}

/* False for a value that is not an integer from 1 to 65535; the default for none. */
bool readPort(BQTypeRef value, int64_t& port) {
  if (value == nullptr) return true;
  if (!isInstance(value, kNumberTypeID)) return false;
  bool isExact = BQNumberGetValue(static_cast<const BQNumber*>(value), kBQNumberSInt64Type, &port);
  return isExact && port >= 1 && port <= 65535;
}

/* The URL of a proxy; empty if the dictionary names none that is usable. */
std::string readProxy(const BQDictionary* dictionary) {
  BQTypeRef value = BQDictionaryGetValue(dictionary, kBQStreamPropertyHTTPProxyHost);
  int64_t port = kDefaultProxyPort;
  if (!isText(value) || !readPort(BQDictionaryGetValue(dictionary, kBQStreamPropertyHTTPProxyPort), port)) {
    return {};
  }
  std::string_view host = textOf(static_cast<const BQString*>(value));
  if (!isUsableHost(host)) return {};
  bool isBareIPv6 = host.find(':') != std::string_view::npos && !host.starts_with('[');
  std::string url("http://");
  url.append(isBareIPv6 ? "[" : "").append(host).append(isBareIPv6 ? "]:" : ":").append(std::to_string(port));
  auto text = Ref<const BQString>::adopt(makeReceivedText(url));
  auto parsed = Ref<const BQURL>::adopt(BQURLCreateWithString(text.get(), nullptr));
  return parsed && BQURLGetPortNumber(parsed.get()) == port ? url : std::string();
}

/*
 * libcurl reads the file when it connects, and would wait for the writer of a FIFO. The files of /proc and
 * /sys that can block or never end are regular, but have no size or a huge one.
 */
BQStreamError checkAuthorityFile(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0 || faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) != 0) {
    return {kBQStreamErrorDomainPOSIX, errno};
  }
  bool isUsable = S_ISREG(status.st_mode) && status.st_size > 0 && status.st_size <= kLargestAuthorityFile;
  return isUsable ? kNoError : kUnusable;
}

/* True if the property is unset or an integer that is at least as large. */
bool readInteger(BQTypeRef number, int64_t smallest, int64_t& result) {
  if (number == nullptr) return true;
  bool isExact = BQNumberGetValue(static_cast<const BQNumber*>(number), kBQNumberSInt64Type, &result);
  return isExact && result >= smallest;
}

}  // namespace

/* In the order of the indices. */
const std::array<StreamProperties::Kind, StreamProperties::kCount> StreamProperties::kKinds = {{
    {kBQStreamPropertyHTTPProxy, kDictionaryTypeID},
    {kBQStreamPropertyHTTPShouldAutoredirect, kBooleanTypeID},
    {kBQStreamPropertyHTTPMaximumReplySize, kNumberTypeID},
    {kBQStreamPropertyHTTPConnectionLimit, kNumberTypeID},
    {kBQStreamPropertyTLSVerifyPeer, kBooleanTypeID},
    {kBQStreamPropertyTLSCertificateAuthorityFile, kStringTypeID},
}};

const StreamProperties::Kind* StreamProperties::kindOf(const BQString* key) {
  for (const Kind& kind : kKinds) {
    if (BQEqual(kind.key, key)) return &kind;
  }
  return nullptr;
}

bool StreamProperties::set(const BQString* key, BQTypeRef value) {
  const Kind* kind = kindOf(key);
  if (kind == nullptr || (value != nullptr && !isInstance(value, kind->valueType))) return false;
  values_[static_cast<size_t>(kind - kKinds.data())] = Ref<const void>::retain(value);
  return true;
}

BQTypeRef StreamProperties::get(const BQString* key) const {
  const Kind* kind = kindOf(key);
  return kind == nullptr ? nullptr : values_[static_cast<size_t>(kind - kKinds.data())].get();
}

BQStreamError StreamProperties::readInto(TransferOptions& options) const {
  if (BQTypeRef proxy = values_[kProxy].get()) {
    options.connection.proxy = readProxy(static_cast<const BQDictionary*>(proxy));
    if (options.connection.proxy.empty()) return httpError(kBQStreamHTTPErrorProxy);
  }
  if (!readInteger(values_[kMaximumReplySize].get(), 0, options.maximumReplySize)) return kUnusable;
  if (!readInteger(values_[kConnectionLimit].get(), 1, options.connectionLimit)) return kUnusable;
  options.followsRedirects = values_[kAutoredirect].get() == kBQBooleanTrue;
  options.connection.verifiesPeer = values_[kVerifyPeer].get() != kBQBooleanFalse;
  const auto* file = static_cast<const BQString*>(values_[kAuthorityFile].get());
  options.connection.certificateAuthorityFile = textOf(file);
  return file == nullptr ? kNoError : checkAuthorityFile(options.connection.certificateAuthorityFile);
}

}  // namespace bq
