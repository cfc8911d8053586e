/* One request over a stream, and all that the stream reports about it. */
#ifndef TESTS_HTTP_EXCHANGE_H
#define TESTS_HTTP_EXCHANGE_H

#include <functional>
#include <string>

#include "support/PlatformValues.h"

class Exchange {
 public:
  explicit Exchange(const std::string& url, const std::string& method = "POST",
                    const std::string& body = "<request/>", const BQString* version = nullptr);
  ~Exchange();
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;

  Exchange& header(const std::string& name, const std::string& value);
  Exchange& property(const BQString* key, BQTypeRef value);
  Exchange& followRedirects() { return property(kBQStreamPropertyHTTPShouldAutoredirect, kBQBooleanTrue); }

  bool open(const BQString* mode = kBQRunLoopDefaultMode);
  /* Runs the loop until the condition holds; false if it does not within 20 seconds. */
  static bool runUntil(const std::function<bool()>& condition, const BQString* mode = kBQRunLoopDefaultMode);
  /* Opens the stream and runs the loop until it ended. */
  Exchange& run();

  BQReadStream* stream();
  void releaseStream();
  /* Adds to the body what there is to read. */
  void readAll();
  bool isOver() const { return isOver_; }

  /* "open", "bytes" (once for any number of them in a row), "end", "error", with blanks between. */
  const std::string& events() const { return events_; }
  const std::string& body() const { return body_; }
  std::string statusLine();
  std::string responseHeader(const std::string& name);
  /* "http 3", "posix 111", "tls 2", "resolver 1"; "none". */
  std::string error();
  /* The body, or the error in brackets. */
  std::string answer() { return error() == "none" ? body_ : "(" + error() + ")"; }

  /* Called with each event after it was recorded, and before bytes are read. */
  std::function<void(BQStreamEventType)> onEvent;
  bool readsBytes = true;

 private:
  static void callBack(BQReadStream* stream, BQStreamEventType event, void* exchange);
  void record(BQStreamEventType event);
  bq::Ref<const BQHTTPMessage> response();

  bq::Ref<BQHTTPMessage> request_;
  bq::Ref<BQReadStream> stream_;
  std::string events_;
  std::string body_;
  bool isOver_ = false;
};

bq::Ref<const BQDictionary> proxy(const std::string& host, int port);

#endif
