/* One request over a stream, and everything that the stream reports about it. */
#ifndef TESTS_HTTP_EXCHANGE_H
#define TESTS_HTTP_EXCHANGE_H

#include <functional>
#include <map>
#include <string>

#include "support/PlatformValues.h"
#include "support/ScriptedPeer.h"

class Exchange {
 public:
  explicit Exchange(const std::string& url, const std::string& method = "POST",
                    const std::string& body = "<request/>", const BQString* version = nullptr) {
    auto address = values::own(BQURLCreateWithString(values::string(url).get(), nullptr));
    request_ = values::own(BQHTTPMessageCreateRequest(values::string(method).get(), address.get(), version));
    auto data = values::own(BQDataCreate(body.data(), static_cast<BQIndex>(body.size())));
    if (!body.empty()) BQHTTPMessageSetBody(request_.get(), data.get());
  }
  ~Exchange() {
    if (stream_) BQReadStreamSetClient(stream_.get(), kBQStreamEventNone, nullptr, nullptr);
  }
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;

  Exchange& header(const std::string& name, const std::string& value) {
    BQHTTPMessageAddHeaderFieldValue(request_.get(), values::string(name).get(), values::string(value).get());
    return *this;
  }
  Exchange& property(const BQString* key, BQTypeRef value) {
    BQReadStreamSetProperty(stream(), key, value);
    return *this;
  }
  Exchange& followRedirects() { return property(kBQStreamPropertyHTTPShouldAutoredirect, kBQBooleanTrue); }
  Exchange& proxy(const std::string& host, int port) {
    auto name = values::string(host);
    auto number = values::integer(port);
    BQTypeRef keys[] = {kBQStreamPropertyHTTPProxyHost, kBQStreamPropertyHTTPProxyPort};
    BQTypeRef settings[] = {name.get(), number.get()};
    return property(kBQStreamPropertyHTTPProxy, values::own(BQDictionaryCreate(keys, settings, 2)).get());
  }

  bool open(const BQString* mode = kBQRunLoopDefaultMode) {
    BQStreamClientContext context = {0, this, nullptr, nullptr, nullptr};
    BQReadStreamSetClient(
        stream(),
        kBQStreamEventOpenCompleted | kBQStreamEventHasBytesAvailable | kBQStreamEventErrorOccurred |
            kBQStreamEventEndEncountered,
        [](BQReadStream*, BQStreamEventType event, void* exchange) {
          static_cast<Exchange*>(exchange)->record(event);
        },
        &context);
    BQReadStreamScheduleWithRunLoop(stream(), BQRunLoopGetCurrent(), mode);
    return BQReadStreamOpen(stream());
  }
  bool runToEnd(const BQString* mode = kBQRunLoopDefaultMode) {
    return runUntil([this] { return isOver_; }, mode);
  }
  /* Opens the stream and runs the loop until it ended. */
  Exchange& run() {
    if (open()) runToEnd();
    return *this;
  }

  BQReadStream* stream() {
    if (!stream_) stream_ = values::own(BQReadStreamCreateForHTTPRequest(request_.get()));
    return stream_.get();
  }
  void releaseStream() { stream_ = nullptr; }
  /* Adds to the body what there is to read. */
  void readAll() {
    char buffer[1024];
    BQIndex count;
    do {
      count = BQReadStreamRead(stream_.get(), reinterpret_cast<uint8_t*>(buffer), sizeof buffer);
      if (count > 0) body_.append(buffer, static_cast<size_t>(count));
    } while (count == sizeof buffer);
  }
  bool isOver() const { return isOver_; }

  /* "open", "bytes" (once for any number of them in a row), "end", "error", with blanks between. */
  const std::string& events() const { return events_; }
  const std::string& body() const { return body_; }
  std::string statusLine() {
    return values::text(values::own(BQHTTPMessageCopyResponseStatusLine(response().get())));
  }
  std::string responseHeader(const std::string& name) {
    return values::text(
        values::own(BQHTTPMessageCopyHeaderFieldValue(response().get(), values::string(name).get())));
  }
  /* The body, or the error in brackets: "(http 3)", "(posix 111)", "(tls 2)", "(resolver 1)". */
  std::string answer() {
    static const std::map<BQStreamErrorDomain, std::string> domains = {
        {kBQStreamErrorDomainPOSIX, "(posix "},
        {kBQStreamErrorDomainTLS, "(tls "},
        {kBQStreamErrorDomainHTTP, "(http "},
        {kBQStreamErrorDomainResolver, "(resolver "}};
    BQStreamError error = BQReadStreamGetError(stream_.get());
    return error.domain == 0 ? body_ : domains.at(error.domain) + std::to_string(error.error) + ")";
  }

  /* Called with each event after it was recorded, and before bytes are read. */
  std::function<void(BQStreamEventType)> onEvent;
  bool readsBytes = true;

 private:
  void record(BQStreamEventType event) {
    std::string name = event == kBQStreamEventOpenCompleted       ? "open"
                       : event == kBQStreamEventHasBytesAvailable ? "bytes"
                       : event == kBQStreamEventEndEncountered    ? "end"
                                                                  : "error";
    isOver_ = name == "end" || name == "error";
    if (name != "bytes" || !events_.ends_with(name)) events_ += (events_.empty() ? "" : " ") + name;
    if (onEvent) onEvent(event);
    if (name == "bytes" && readsBytes && stream_) readAll();
  }
  BQRef<const BQHTTPMessage> response() {
    return values::own(static_cast<const BQHTTPMessage*>(
        BQReadStreamCopyProperty(stream_.get(), kBQStreamPropertyHTTPResponseHeader)));
  }

  BQRef<BQHTTPMessage> request_;
  BQRef<BQReadStream> stream_;
  std::string events_;
  std::string body_;
  bool isOver_ = false;
};

#endif
