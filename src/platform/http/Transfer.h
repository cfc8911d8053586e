/* One HTTP exchange: a request, the redirects that are followed, and the reply as it arrives. */
#ifndef BQ_HTTP_TRANSFER_H
#define BQ_HTTP_TRANSFER_H

#include <cstdint>

#include <limits>
#include <list>
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
  /* Of the thread. */
  int64_t connectionLimit = std::numeric_limits<int64_t>::max();
  bool followsRedirects = false;
};

/* Receives the events of a transfer. Neither function may touch any transfer before it returns. */
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

  /* Stops what is under way and forgets everything but the handle and its memory. */
  void stop();

  /* Whether the handle can serve another request. */
  bool isReusable() const { return !isError(error_); }

  /* The final response, once its headers have arrived. */
  const Ref<BQHTTPMessage>& response() const { return response_; }
  size_t available() const { return unread_.size(); }
  size_t read(uint8_t* buffer, size_t size);
  bool isFinished() const { return isFinished_; }
  BQStreamError error() const { return error_; }
  const TransferObserver& observer() const { return observer_; }

  /* For the engine. */
  std::list<Transfer>::iterator position;
  int socket = 0;
  TransferEngine& engine() const { return engine_; }
  CURL* handle() const { return handle_.get(); }
  bool isWaiting() const { return isWaiting_; }
  void leaveQueue() { isWaiting_ = false; }
  bool isPaused() const { return isPaused_; }
  void attemptEnded(CURLcode code);
  /* Ends a reply when many reads in a row bring nothing: libcurl does not limit the extension of a chunk. */
  void socketWasRead();
  /* False once the request was sent: it is sent again only by mayBeSentAgain(). */
  bool connectionOpens();
  void connectionCloses(int socket);

 private:
  struct HandleDeleter {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
  };

  static size_t onHeader(char* bytes, size_t one, size_t count, void* transfer);
  static size_t onBody(char* bytes, size_t one, size_t count, void* transfer);
  static int onRequest(void* transfer, char*, char*, int, int);
  static int onProgress(void* transfer, curl_off_t, curl_off_t, curl_off_t, curl_off_t);

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
  void finish(BQStreamError error);
  void notify() const { observer_.changed(observer_.context); }

  TransferEngine& engine_;
  std::unique_ptr<CURL, HandleDeleter> handle_;
  /* What the handle is configured for at present: it keeps its options from request to request. */
  struct Configured {
    std::string url;
    std::string method;
    bool hasBody = false;
    long version = CURL_HTTP_VERSION_NONE;
    curl_off_t largestBody = 0;
    long isConnectionNew = 0;
    long hidesProgress = 1;
  };
  Configured configured_;
  ConnectionOptions connection_;
  HeaderList headers_;

  TransferObserver observer_;
  Ref<BQHTTPMessage> request_;
  int64_t maximumReplySize_ = 0;
  bool followsRedirects_ = false;

  /* What is requested; a redirect changes it. */
  std::string url_;
  std::string method_;
  Ref<const BQData> body_;
  int redirects_ = 0;
  bool isBodyDropped_ = false;
  bool isAtOrigin_ = true;
  bool isEncrypted_ = false;

  bool isRunning_ = false;
  bool isWaiting_ = false;
  struct Attempt {
    bool isConnectionNew = false;
    bool isSent = false;
    /* Of a connection that failed and was not read any more. */
    int pendingError = 0;
    bool areHeadersComplete = false;
    size_t headerBytes = 0;
    BQIndex redirectStatus = 0;
    int64_t bodyBytes = 0;
    /* How much had arrived at the last read that brought something, and the reads since then. */
    int64_t lastProgress = 0;
    int vainReads = 0;
    int tunnelBytes = 0;
    BQStreamError refusal = kNoError;
  };
  Attempt attempt_;
  std::string headerLines_;
  std::string location_;

  /* What is there for the reader. */
  Ref<BQHTTPMessage> response_;
  ByteQueue unread_;
  bool isPaused_ = false;
  bool isFinished_ = false;
  BQStreamError error_ = kNoError;
};

}  // namespace bq

#endif
