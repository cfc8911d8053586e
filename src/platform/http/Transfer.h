/* One HTTP exchange: a request, the redirects that are followed, and the reply as it arrives. */
#ifndef BQ_HTTP_TRANSFER_H
#define BQ_HTTP_TRANSFER_H

#include <cstdint>

#include <memory>
#include <string>
#include <string_view>

#include <curl/curl.h>

#include "platform/http/ByteQueue.h"
#include "platform/http/HTTPMessage.h"
#include "platform/http/HeaderList.h"
#include "platform/http/StreamError.h"

namespace bq {

class TransferEngine;

/* How connections are made. */
struct ConnectionOptions {
  /* "http://host:port"; empty for none. */
  std::string proxy;
  /* Empty for the system's certificates. */
  std::string certificateAuthorityFile;
  bool verifiesPeer = true;

  bool operator==(const ConnectionOptions&) const = default;
};

struct TransferOptions {
  ConnectionOptions connection;
  int64_t maximumReplySize = int64_t{1} << 30;
  bool followsRedirects = false;
};

/* Who is told about a transfer. Neither function may touch any transfer before it returns. */
struct TransferObserver {
  /* Something arrived, or the transfer ended. */
  void (*changed)(void* context) = nullptr;
  /* The thread ends and the transfer with it; it must not be used any more. */
  void (*lost)(void* context) = nullptr;
  void* context = nullptr;
};

class Transfer {
 public:
  explicit Transfer(TransferEngine& engine);
  ~Transfer();
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  /* False if there was no memory for the transfer's handle. */
  bool isUsable() const { return handle_ != nullptr; }

  void begin(Ref<BQHTTPMessage> request, const TransferOptions& options, TransferObserver observer);

  /* Breaks off what is under way and forgets everything but the memory. */
  void stop();

  /* Whether the handle may serve another request. */
  bool isReusable() const { return !isError(error_); }

  /* The final response, once its headers have arrived. */
  const Ref<BQHTTPMessage>& response() const { return response_; }
  size_t available() const { return unread_.size(); }
  size_t read(uint8_t* buffer, size_t size);
  bool isFinished() const { return isFinished_; }
  BQStreamError error() const { return error_; }
  const TransferObserver& observer() const { return observer_; }

  /* For the engine. */
  CURL* handle() const { return handle_.get(); }
  bool isEncrypted() const { return isEncrypted_; }
  bool isPaused() const { return isPaused_; }
  void attemptEnded(CURLcode code);
  /* Ends a reply of which many reads in a row bring nothing: a chunk's extension has no limit of its own. */
  void socketWasRead();
  void connectionClosed(bool hadData, int pendingError) {
    replyBegan_ = replyBegan_ || hadData;
    pendingError_ = pendingError;
  }

 private:
  struct HandleDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  };

  static size_t onHeader(char* bytes, size_t one, size_t count, void* transfer);
  static size_t onBody(char* bytes, size_t one, size_t count, void* transfer);
  static int onRequest(void* transfer, char*, char*, int, int);
  static curl_socket_t onOpenSocket(void* transfer, curlsocktype, curl_sockaddr* address);

  template <class Value>
  void set(CURLoption option, Value value) {
    curl_easy_setopt(handle_.get(), option, value);
  }

  template <class Value>
  void change(CURLoption option, Value& configured, Value value) {
    if (configured != value) set(option, configured = value);
  }

  void configureHandle();
  void configureConnection(const ConnectionOptions& options);
  void configureRequest();
  void configureMethod();
  void configureBody();
  void configureHeaders();
  bool hasBody() const;
  void suppress(std::string_view name);
  bool isLeftOut(std::string_view name) const;
  void startAttempt(bool onNewConnection);
  void detach();

  bool takeHeader(std::string_view line);
  bool endHeaders();
  size_t takeBody(std::string_view bytes);
  bool mayBeSentAgain(CURLcode code) const;
  BQStreamError errorOfAttempt(CURLcode code) const;
  void followRedirect();
  void resume();
  void finish(BQStreamError error);
  void notify() const { observer_.changed(observer_.context); }

  TransferEngine& engine_;
  std::unique_ptr<CURL, HandleDeleter> handle_;
  /* For which the handle is configured at present: it keeps its options from request to request. */
  struct Configured {
    std::string url;
    std::string method;
    bool hasBody = false;
    long version = CURL_HTTP_VERSION_NONE;
    curl_off_t largestBody = 0;
    long isConnectionNew = 0;
  };
  Configured configured_;
  ConnectionOptions connection_;
  HeaderList headers_;

  TransferObserver observer_;
  Ref<BQHTTPMessage> request_;
  int64_t maximumReplySize_ = 0;
  bool followsRedirects_ = false;

  /* What is asked for; a redirect changes it. */
  std::string url_;
  std::string method_;
  Ref<const BQData> body_;
  int redirects_ = 0;
  bool isBodyDropped_ = false;
  bool isAtOrigin_ = true;
  bool isEncrypted_ = false;

  /* How far the present attempt is. */
  bool isRunning_ = false;
  bool wasSentAgain_ = false;
  bool replyBegan_ = false;
  /* Of a connection that failed and was not read any more. */
  int pendingError_ = 0;
  bool areHeadersComplete_ = false;
  int socket_ = -1;
  size_t headerBytes_ = 0;
  std::string headerLines_;
  BQIndex redirectStatus_ = 0;
  std::string location_;
  int64_t bodyBytes_ = 0;
  /* How much had arrived at the last read that brought something, and the reads since then. */
  int64_t lastProgress_ = 0;
  int vainReads_ = 0;
  BQStreamError refusal_ = kNoError;

  /* What is there for the reader. */
  Ref<BQHTTPMessage> response_;
  ByteQueue unread_;
  bool isPaused_ = false;
  bool isFinished_ = false;
  BQStreamError error_ = kNoError;
};

}  // namespace bq

#endif
