#include "platform/http/Exchange.h"

using namespace values;

Exchange::Exchange(const std::string& address, const std::string& method, const std::string& body,
                   const BQString* version) {
  auto url = own(BQURLCreateWithString(string(address).get(), nullptr));
  request_ = own(BQHTTPMessageCreateRequest(string(method).get(), url.get(), version));
  auto data = own(BQDataCreate(body.data(), static_cast<BQIndex>(body.size())));
  if (!body.empty()) BQHTTPMessageSetBody(request_.get(), data.get());
}

Exchange::~Exchange() {
  if (stream_) BQReadStreamSetClient(stream_.get(), kBQStreamEventNone, nullptr, nullptr);
}

BQReadStream* Exchange::stream() {
  if (!stream_) stream_ = own(BQReadStreamCreateForHTTPRequest(request_.get()));
  return stream_.get();
}

void Exchange::releaseStream() {
  stream_ = nullptr;
}

Exchange& Exchange::header(const std::string& name, const std::string& value) {
  BQHTTPMessageAddHeaderFieldValue(request_.get(), string(name).get(), string(value).get());
  return *this;
}

Exchange& Exchange::property(const BQString* key, BQTypeRef value) {
  BQReadStreamSetProperty(stream(), key, value);
  return *this;
}

bool Exchange::open(const BQString* mode) {
  BQStreamClientContext context{};
  context.info = this;
  BQStreamEventType events = kBQStreamEventOpenCompleted | kBQStreamEventHasBytesAvailable |
                             kBQStreamEventErrorOccurred | kBQStreamEventEndEncountered;
  BQReadStreamSetClient(stream(), events, callBack, &context);
  BQReadStreamScheduleWithRunLoop(stream(), BQRunLoopGetCurrent(), mode);
  return BQReadStreamOpen(stream());
}

bool Exchange::runUntil(const std::function<bool()>& condition, const BQString* mode) {
  BQAbsoluteTime limit = BQAbsoluteTimeGetCurrent() + 20;
  while (!condition()) {
    if (BQAbsoluteTimeGetCurrent() > limit) return false;
    if (BQRunLoopRunInMode(mode, 1, true) == kBQRunLoopRunFinished) return condition();
  }
  return true;
}

Exchange& Exchange::run() {
  if (open()) runUntil([this] { return isOver_; });
  return *this;
}

void Exchange::callBack(BQReadStream*, BQStreamEventType event, void* context) {
  static_cast<Exchange*>(context)->record(event);
}

void Exchange::record(BQStreamEventType event) {
  std::string name = event == kBQStreamEventOpenCompleted       ? "open"
                     : event == kBQStreamEventHasBytesAvailable ? "bytes"
                     : event == kBQStreamEventEndEncountered    ? "end"
                                                                : "error";
  isOver_ = name == "end" || name == "error";
  if (name != "bytes" || !events_.ends_with(name)) events_ += (events_.empty() ? "" : " ") + name;
  if (onEvent) onEvent(event);
  if (name == "bytes" && readsBytes && stream_) readAll();
}

void Exchange::readAll() {
  uint8_t buffer[1024];
  BQIndex count;
  do {
    count = BQReadStreamRead(stream_.get(), buffer, sizeof buffer);
    if (count > 0) body_.append(reinterpret_cast<char*>(buffer), static_cast<size_t>(count));
  } while (count == sizeof buffer);
}

bq::Ref<const BQHTTPMessage> Exchange::response() {
  return own(static_cast<const BQHTTPMessage*>(
      BQReadStreamCopyProperty(stream_.get(), kBQStreamPropertyHTTPResponseHeader)));
}

std::string Exchange::statusLine() {
  return text(own(BQHTTPMessageCopyResponseStatusLine(response().get())));
}

std::string Exchange::responseHeader(const std::string& name) {
  return text(own(BQHTTPMessageCopyHeaderFieldValue(response().get(), string(name).get())));
}

std::string Exchange::error() {
  BQStreamError error = BQReadStreamGetError(stream_.get());
  if (error.domain == 0) return "none";
  std::string domain = error.domain == kBQStreamErrorDomainPOSIX  ? "posix "
                       : error.domain == kBQStreamErrorDomainTLS  ? "tls "
                       : error.domain == kBQStreamErrorDomainHTTP ? "http "
                                                                  : "resolver ";
  return domain + std::to_string(error.error);
}

bq::Ref<const BQDictionary> proxy(const std::string& host, int port) {
  auto name = string(host);
  auto number = integer(port);
  BQTypeRef keys[] = {kBQStreamPropertyHTTPProxyHost, kBQStreamPropertyHTTPProxyPort};
  BQTypeRef settings[] = {name.get(), number.get()};
  return own(BQDictionaryCreate(keys, settings, 2));
}
