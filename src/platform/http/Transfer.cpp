#include "platform/http/Transfer.h"

#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include <BQ/BQData.h>
#include <BQ/BQURL.h>

#include "platform/http/Redirect.h"
#include "platform/http/Text.h"
#include "platform/http/TransferEngine.h"

/* Of OpenSSL, if libcurl brings it along; libbq does not depend on it. */
extern "C" {
using MessageCallback = void(int isSent, int version, int type, const void* bytes, size_t size, void* ssl,
                             void*);
[[gnu::weak]] long SSL_CTX_ctrl(void* context, int command, long number, void* pointer);
[[gnu::weak]] void SSL_CTX_set_msg_callback(void* context, MessageCallback* callback);
[[gnu::weak]] int SSL_in_init(const void* ssl);
[[gnu::weak]] void SSL_set_shutdown(void* ssl, int mode);
}

namespace bq {
namespace {

constexpr size_t kMostHeaderBytes = 256 * 1024;
/* Bytes that wait to be read before the peer is made to wait. */
constexpr size_t kMostUnread = 256 * 1024;
/* The body of a redirect is read to keep the connection, unless it is longer. */
constexpr int64_t kMostRedirectBody = 64 * 1024;
constexpr int kMostRedirects = 20;
constexpr int kMostVainReads = 4096;
constexpr int kMostTunnelBytes = 64 * 1024;
constexpr long kReceiveBufferSize = 32 * 1024;

/* Bodies up to this size are sent by every libcurl without asking whether they are welcome. */
constexpr BQIndex kLargestUnasked = 1024;

/* The same for the request that asks a proxy for a tunnel. */
curl_slist* tunnelHeaders() {
  static char line[] = "Proxy-Connection:";
  static curl_slist headers = {line, nullptr};
  return &headers;
}

bool isEncryptedURL(std::string_view url) {
  return equalsIgnoringCase(url.substr(0, 6), "https:");
}

bool usuallyHasBody(std::string_view method) {
  return method == "POST" || method == "PUT" || method == "PATCH";
}

bool isRedirect(BQIndex status) {
  return (status >= 301 && status <= 303) || status == 307 || status == 308;
}

/* Whether headers name several lengths: another reader of the connection could take another one. */
bool hasTwoLengths(const BQHTTPMessage& response) {
  const BQHTTPMessage::Field* first = findHeader(response, "Content-Length");
  if (first == nullptr) return false;
  auto isOther = [first](const BQHTTPMessage::Field& field) {
    return equalsIgnoringCase(field.name, first->name) && field.value != first->value;
  };
  return std::any_of(response.fields().begin(), response.fields().end(), isOther);
}

/*
 * During a handshake, OpenSSL skips requests for a new one within one read for as long as they keep coming.
 * No server has a reason to send one then.
 */
void refuseHelloRequest(int isSent, int, int type, const void* bytes, size_t size, void* ssl, void*) {
  constexpr int kHandshake = 22;
  constexpr int kReceivedShutdown = 2;
  if (isSent != 0 || type != kHandshake || size != 4) return;
  bool isHelloRequest = *static_cast<const char*>(bytes) == 0;
  if (isHelloRequest && SSL_in_init(ssl) != 0) SSL_set_shutdown(ssl, kReceivedShutdown);
}

/*
 * By default, OpenSSL handles messages of the TLS protocol itself, such as key updates, within one read for
 * as long as they keep coming. Without automatic retries it returns to its caller after each of them.
 */
CURLcode limitReads(CURL*, void* context, void*) {
  constexpr int kClearMode = 78;
  constexpr long kAutoRetry = 4;
  bool isOpenSSL = std::string_view(curl_version_info(CURLVERSION_NOW)->ssl_version).starts_with("OpenSSL/");
  if (!isOpenSSL || SSL_CTX_ctrl == nullptr) return CURLE_OK;
  SSL_CTX_ctrl(context, kClearMode, kAutoRetry, nullptr);
  SSL_CTX_set_msg_callback(context, refuseHelloRequest);
  return CURLE_OK;
}

/* The certificates that libcurl was built to trust. */
const char* defaultPath(CURLINFO info, CURL* handle) {
  char* path = nullptr;
  curl_easy_getinfo(handle, info, &path);
  return path;
}

}  // namespace

Transfer::Transfer(TransferEngine& engine) : engine_(engine), handle_(curl_easy_init()) {
  if (handle_ != nullptr) configureHandle();
}

Transfer::~Transfer() {
  stop();
}

/* What is the same for all requests. */
void Transfer::configureHandle() {
  set(CURLOPT_PRIVATE, this);
  set(CURLOPT_NOSIGNAL, 1L);
  /* A name that is being resolved must not hold up the thread when the transfer is stopped. */
  set(CURLOPT_QUICK_EXIT, 1L);
  set(CURLOPT_XFERINFOFUNCTION, onProgress);
  set(CURLOPT_XFERINFODATA, this);
  set(CURLOPT_PROTOCOLS_STR, "http,https");
  set(CURLOPT_PATH_AS_IS, 1L);
  set(CURLOPT_BUFFERSIZE, kReceiveBufferSize);
  set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  set(CURLOPT_PROXYHEADER, tunnelHeaders());
  /* Without it the environment could set the proxy aside. */
  set(CURLOPT_NOPROXY, "");
  set(CURLOPT_HEADERFUNCTION, onHeader);
  set(CURLOPT_HEADERDATA, this);
  set(CURLOPT_WRITEFUNCTION, onBody);
  set(CURLOPT_WRITEDATA, this);
  set(CURLOPT_PREREQFUNCTION, onRequest);
  set(CURLOPT_PREREQDATA, this);
  set(CURLOPT_OPENSOCKETFUNCTION, TransferEngine::onOpenSocket);
  set(CURLOPT_OPENSOCKETDATA, this);
  /* A connection may live longer than the transfer that opened it. */
  set(CURLOPT_CLOSESOCKETFUNCTION, TransferEngine::onCloseSocket);
  set(CURLOPT_CLOSESOCKETDATA, &engine_);
  set(CURLOPT_SSL_CTX_FUNCTION, limitReads);
  configureConnection(ConnectionOptions());
}

void Transfer::begin(Ref<BQHTTPMessage> request, const TransferOptions& options, TransferObserver observer) {
  request_ = std::move(request);
  maximumReplySize_ = options.maximumReplySize;
  followsRedirects_ = options.followsRedirects;
  observer_ = observer;
  url_ = textOf(BQURLGetString(request_->url.get()));
  method_ = textOf(request_->method.get());
  body_ = request_->body;
  if (connection_ != options.connection) configureConnection(options.connection);
  startAttempt(false);
}

void Transfer::stop() {
  if (isRunning_) detach();
  request_ = nullptr;
  response_ = nullptr;
  body_ = nullptr;
  observer_ = {};
  unread_.clear();
  redirects_ = 0;
  isBodyDropped_ = false;
  isAtOrigin_ = true;
  isPaused_ = false;
  isFinished_ = false;
  error_ = kNoError;
}

void Transfer::configureConnection(const ConnectionOptions& options) {
  connection_ = options;
  /* An empty proxy is none; an unset one would be that of the environment. */
  set(CURLOPT_PROXY, options.proxy.c_str());
  set(CURLOPT_SSL_VERIFYPEER, options.verifiesPeer ? 1L : 0L);
  set(CURLOPT_SSL_VERIFYHOST, options.verifiesPeer ? 2L : 0L);
  bool isDefault = options.certificateAuthorityFile.empty();
  const char* file = options.certificateAuthorityFile.c_str();
  set(CURLOPT_CAINFO, isDefault ? defaultPath(CURLINFO_CAINFO, handle()) : file);
  set(CURLOPT_CAPATH, isDefault ? defaultPath(CURLINFO_CAPATH, handle()) : nullptr);
}

void Transfer::startAttempt(bool onNewConnection) {
  attempt_ = {};
  headerLines_.clear();
  location_.clear();
  isEncrypted_ = isEncryptedURL(url_);
  configureRequest();
  change(CURLOPT_FRESH_CONNECT, configured_.isConnectionNew, onNewConnection ? 1L : 0L);
  isRunning_ = isWaiting_ = true;
  engine_.add(*this);
}

void Transfer::detach() {
  engine_.remove(*this);
  isRunning_ = isWaiting_ = false;
}

void Transfer::configureRequest() {
  bool isVersion1_0 = request_->version.get() == kBQHTTPVersion1_0;
  if (configured_.url != url_) set(CURLOPT_URL, (configured_.url = url_).c_str());
  change(CURLOPT_HTTP_VERSION, configured_.version,
         static_cast<long>(isVersion1_0 ? CURL_HTTP_VERSION_1_0 : CURL_HTTP_VERSION_1_1));
  bool hasTunnel = isEncrypted_ && !connection_.proxy.empty();
  change(CURLOPT_NOPROGRESS, configured_.hidesProgress, hasTunnel ? 0L : 1L);
  configureMethod();
  configureBody();
  configureHeaders();
}

bool Transfer::hasBody() const {
  return method_ != "HEAD" && (body_ || usuallyHasBody(method_));
}

void Transfer::configureMethod() {
  if (configured_.method == method_ && configured_.hasBody == hasBody()) return;
  configured_.method = method_;
  configured_.hasBody = hasBody();
  bool isHead = method_ == "HEAD";
  if (hasBody()) {
    set(CURLOPT_POST, 1L);
  } else {
    set(CURLOPT_HTTPGET, 1L);
    set(CURLOPT_NOBODY, isHead ? 1L : 0L);
  }
  bool isNatural = isHead || method_ == (hasBody() ? "POST" : "GET");
  set(CURLOPT_CUSTOMREQUEST, isNatural ? nullptr : method_.c_str());
}

void Transfer::configureBody() {
  if (hasBody()) {
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(BQDataGetLength(body_.get())));
    set(CURLOPT_POSTFIELDS, body_ ? reinterpret_cast<const char*>(BQDataGetBytePtr(body_.get())) : "");
  }
  /* The length that the reply to HEAD names is that of a body that does not come. */
  change(CURLOPT_MAXFILESIZE_LARGE, configured_.largestBody,
         static_cast<curl_off_t>(method_ == "HEAD" ? 0 : maximumReplySize_));
}

/* Headers of the message that a redirect made wrong, and those that belong to the transfer. */
bool Transfer::isLeftOut(std::string_view name) const {
  auto is = [name](std::string_view other) { return equalsIgnoringCase(name, other); };
  if (is("Content-Length") || is("Transfer-Encoding")) return true;
  if (isBodyDropped_ && equalsIgnoringCase(name.substr(0, 8), "Content-")) return true;
  return !isAtOrigin_ && (is("Host") || is("Authorization") || is("Proxy-Authorization") || is("Cookie"));
}

void Transfer::configureHeaders() {
  headers_.clear();
  for (const auto& field : request_->fields()) {
    if (!isLeftOut(field.name)) headers_.add(field.name, field.value);
  }
  suppress("Accept");
  if (hasBody()) suppress("Content-Type");
  if (BQDataGetLength(body_.get()) > kLargestUnasked) suppress("Expect");
  if (!connection_.proxy.empty()) suppress("Proxy-Connection");
  set(CURLOPT_HTTPHEADER, headers_.list());
}

/* Keeps libcurl from sending a header of its own where the message has none. */
void Transfer::suppress(std::string_view name) {
  if (findHeader(*request_.get(), name) == nullptr || isLeftOut(name)) headers_.suppress(name);
}

/* What was held back arrives within the call. */
size_t Transfer::read(uint8_t* buffer, size_t size) {
  size_t count = unread_.take(buffer, size);
  if (isPaused_ && unread_.size() <= kMostUnread / 2) {
    isPaused_ = false;
    CURLcode code = curl_easy_pause(handle(), CURLPAUSE_CONT);
    if (code != CURLE_OK) attemptEnded(code);
  }
  return count;
}

size_t Transfer::onHeader(char* bytes, size_t one, size_t count, void* transfer) {
  size_t size = one * count;
  return static_cast<Transfer*>(transfer)->takeHeader({bytes, size}) ? size : 0;
}

size_t Transfer::onBody(char* bytes, size_t one, size_t count, void* transfer) {
  return static_cast<Transfer*>(transfer)->takeBody({bytes, one * count});
}

/*
 * libcurl would send the request again on any connection that it keeps, as often as each of them ends, and
 * whenever the answer to "Expect" is 417.
 */
int Transfer::onRequest(void* context, char*, char*, int, int) {
  auto* transfer = static_cast<Transfer*>(context);
  if (std::exchange(transfer->attempt_.isSent, true)) return CURL_PREREQFUNC_ABORT;
  transfer->change(CURLOPT_FRESH_CONNECT, transfer->configured_.isConnectionNew, 1L);
  return CURL_PREREQFUNC_OK;
}

/* libcurl reads the answer of a proxy to CONNECT by single bytes, and does not return before its end. */
int Transfer::onProgress(void* context, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  Attempt& attempt = static_cast<Transfer*>(context)->attempt_;
  return !attempt.isSent && ++attempt.tunnelBytes > kMostTunnelBytes ? 1 : 0;
}

bool Transfer::connectionOpens() {
  attempt_.isConnectionNew = attempt_.isConnectionNew || !attempt_.isSent;
  return !attempt_.isSent;
}

void Transfer::connectionCloses(int socket) {
  socklen_t size = sizeof attempt_.pendingError;
  getsockopt(socket, SOL_SOCKET, SO_ERROR, &attempt_.pendingError, &size);
}

/* One line of the headers or, after the body, of the trailers. False ends the transfer. */
bool Transfer::takeHeader(std::string_view line) {
  attempt_.headerBytes += line.size();
  if (attempt_.headerBytes > kMostHeaderBytes) {
    attempt_.refusal = httpError(kBQStreamHTTPErrorReplyTooLarge);
    return false;
  }
  if (attempt_.areHeadersComplete) return true;
  bool isEnd = line == "\r\n" || line == "\n";
  if (!isEnd) headerLines_.append(line);
  return !isEnd || endHeaders();
}

bool Transfer::endHeaders() {
  Ref<BQHTTPMessage> response = makeReceivedResponse(headerLines_);
  headerLines_.clear();
  if (!response || hasTwoLengths(*response.get())) {
    attempt_.refusal = httpError(kBQStreamHTTPErrorParse);
    return false;
  }
  bool isInterim = response->statusCode / 100 == 1 && response->statusCode != 101;
  if (isInterim) return true;
  attempt_.areHeadersComplete = true;
  const BQHTTPMessage::Field* location = findHeader(*response.get(), "Location");
  if (followsRedirects_ && location != nullptr && isRedirect(response->statusCode)) {
    attempt_.redirectStatus = response->statusCode;
    location_ = location->value;
  } else {
    response_ = std::move(response);
    notify();
  }
  return true;
}

/* The number of bytes that were taken; anything else but CURL_WRITEFUNC_PAUSE ends the transfer. */
size_t Transfer::takeBody(std::string_view bytes) {
  bool isRedirect = !response_;
  auto size = static_cast<int64_t>(bytes.size());
  if (isRedirect) {
    attempt_.bodyBytes += size;
    return attempt_.bodyBytes <= kMostRedirectBody ? bytes.size() : 0;
  }
  if (size > maximumReplySize_ - attempt_.bodyBytes) {
    attempt_.refusal = httpError(kBQStreamHTTPErrorReplyTooLarge);
    return 0;
  }
  if (unread_.size() >= kMostUnread && engine_.knowsConnectionOf(*this)) {
    isPaused_ = true;
    return CURL_WRITEFUNC_PAUSE;
  }
  attempt_.bodyBytes += size;
  unread_.append(bytes.data(), bytes.size());
  notify();
  return bytes.size();
}

void Transfer::socketWasRead() {
  if (!isRunning_ || !attempt_.areHeadersComplete) return;
  int64_t progress = static_cast<int64_t>(attempt_.headerBytes) + attempt_.bodyBytes;
  if (progress != attempt_.lastProgress) {
    attempt_.lastProgress = progress;
    attempt_.vainReads = 0;
  } else if (++attempt_.vainReads > kMostVainReads) {
    attempt_.refusal = httpError(kBQStreamHTTPErrorReplyTooLarge);
    attemptEnded(CURLE_WRITE_ERROR);
  }
}

void Transfer::attemptEnded(CURLcode code) {
  detach();
  isPaused_ = false;
  if (attempt_.areHeadersComplete && !response_) {
    followRedirect();
  } else if ((code == CURLE_OK || code == CURLE_ABORTED_BY_CALLBACK) && attempt_.areHeadersComplete) {
    finish(kNoError);
  } else if (mayBeSentAgain(code)) {
    startAttempt(true);
  } else {
    finish(errorOfAttempt(code));
  }
}

/*
 * A connection that was used before may have been closed before it received the request. Whether the
 * beginning of a status line arrived is not known.
 */
bool Transfer::mayBeSentAgain(CURLcode code) const {
  bool isLost = code == CURLE_SEND_ERROR || code == CURLE_RECV_ERROR || code == CURLE_GOT_NOTHING ||
                code == CURLE_COULDNT_CONNECT;
  return isLost && attempt_.isSent && !attempt_.isConnectionNew && attempt_.headerBytes == 0;
}

BQStreamError Transfer::errorOfAttempt(CURLcode code) const {
  if (isError(attempt_.refusal)) return attempt_.refusal;
  /* A header line that is too long. */
  if (code == CURLE_OUT_OF_MEMORY) return httpError(kBQStreamHTTPErrorReplyTooLarge);
  /* libcurl is content with headers that break off. */
  if (code == CURLE_OK) return httpError(kBQStreamHTTPErrorConnectionLost);
  if (attempt_.headerBytes > 0 && (code == CURLE_GOT_NOTHING || code == CURLE_COULDNT_CONNECT)) {
    return httpError(kBQStreamHTTPErrorConnectionLost);
  }
  bool isLost = code == CURLE_SEND_ERROR || code == CURLE_RECV_ERROR;
  if (isLost && attempt_.pendingError != 0) return {kBQStreamErrorDomainPOSIX, attempt_.pendingError};
  return errorOfTransfer(code, handle());
}

void Transfer::followRedirect() {
  RedirectTarget target = resolveRedirect(url_, location_);
  bool isDowngrade = isEncrypted_ && !isEncryptedURL(target.url);
  if (++redirects_ > kMostRedirects || target.url.empty() || isDowngrade) {
    finish(httpError(kBQStreamHTTPErrorRedirect));
    return;
  }
  if (attempt_.redirectStatus == 303) {
    if (method_ != "HEAD") method_ = "GET";
    body_ = nullptr;
    isBodyDropped_ = true;
  }
  url_ = std::move(target.url);
  isAtOrigin_ = isAtOrigin_ && target.isSameOrigin;
  startAttempt(false);
}

void Transfer::finish(BQStreamError error) {
  isFinished_ = true;
  error_ = error;
  if (isError(error)) unread_.clear();
  notify();
}

}  // namespace bq
