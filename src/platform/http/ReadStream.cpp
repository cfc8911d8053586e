#include "platform/http/ReadStream.h"

#include <cerrno>

#include <algorithm>
#include <utility>

#include <BQ/BQURL.h>

#include "platform/http/Text.h"

using bq::Ref;

namespace bq {
namespace {

const BQRuntimeClass kReadStreamClass = {
    0, "BQReadStream", nullptr, nullptr, finalizeObject<BQReadStream>, nullptr, nullptr, nullptr, nullptr};

constexpr BQStreamEventType kAllEvents = kBQStreamEventOpenCompleted | kBQStreamEventHasBytesAvailable |
                                         kBQStreamEventCanAcceptBytes | kBQStreamEventErrorOccurred |
                                         kBQStreamEventEndEncountered;

/*
 * Streams report behind everything else of a pass: a client that reads in a source of its own has
 * then read what was reported before, and learns of the end one pass earlier.
 */
constexpr BQIndex kSourceOrder = 1'000'000;

constexpr BQStreamError kNotPossible = {kBQStreamErrorDomainPOSIX, EINVAL};

BQReadStream* asStream(BQTypeRef object) {
  bool isStream = isInstance(object, BQReadStreamGetTypeID());
  return isStream ? static_cast<BQReadStream*>(const_cast<void*>(object)) : nullptr;
}

bool isUsable(const BQURL* url) {
  auto scheme = Ref<const BQString>::adopt(BQURLCopyScheme(url));
  auto host = Ref<const BQString>::adopt(BQURLCopyHostName(url));
  return host && (textOf(scheme.get()) == "http" || textOf(scheme.get()) == "https");
}

}  // namespace

StreamClient::StreamClient(BQStreamEventType events, BQReadStreamClientCallBack callback,
                           const BQStreamClientContext* context)
    : events_(events), callback_(callback) {
  if (context == nullptr) return;
  info_ = context->retain != nullptr ? context->retain(context->info) : context->info;
  releaseInfo_ = context->release;
}

StreamClient::StreamClient(StreamClient&& other) noexcept
    : events_(std::exchange(other.events_, kBQStreamEventNone)),
      callback_(other.callback_),
      info_(other.info_),
      releaseInfo_(std::exchange(other.releaseInfo_, nullptr)) {}

StreamClient& StreamClient::operator=(StreamClient&& other) noexcept {
  std::swap(events_, other.events_);
  std::swap(callback_, other.callback_);
  std::swap(info_, other.info_);
  std::swap(releaseInfo_, other.releaseInfo_);
  return *this;
}

StreamClient::~StreamClient() {
  if (releaseInfo_ != nullptr) releaseInfo_(info_);
}

}  // namespace bq

BQReadStream::BQReadStream(BQTypeID typeID, Ref<BQHTTPMessage> request)
    : Object(typeID), request_(std::move(request)) {}

BQReadStream::~BQReadStream() {
  close();
}

bool BQReadStream::setProperty(const BQString* key, BQTypeRef value) {
  return !wasOpened_ && properties_.set(key, value);
}

Ref<const void> BQReadStream::copyProperty(const BQString* key) const {
  if (!BQEqual(key, kBQStreamPropertyHTTPResponseHeader)) {
    return Ref<const void>::retain(properties_.get(key));
  }
  return Ref<const void>::retain(transfer_ != nullptr ? transfer_->response().get() : response_.get());
}

bool BQReadStream::setClient(BQStreamEventType events, BQReadStreamClientCallBack callback,
                             const BQStreamClientContext* context) {
  if ((events & ~bq::kAllEvents) != 0) return false;
  /* The former client is let go last: its release function may use the stream. */
  bq::StreamClient former = std::move(client_);
  if (callback != nullptr && events != kBQStreamEventNone) {
    client_ = bq::StreamClient(events, callback, context);
  }
  signalIfPending();
  return true;
}

void BQReadStream::schedule(BQRunLoop* runLoop, const BQString* mode) {
  if (!bq::isInstance(runLoop, BQRunLoopGetTypeID()) || !bq::isText(mode)) return;
  if (runLoop_ && runLoop_.get() != runLoop) return;
  auto isMode = [mode](const auto& other) { return BQEqual(other.get(), mode); };
  if (std::any_of(modes_.begin(), modes_.end(), isMode)) return;
  runLoop_ = Ref<BQRunLoop>::retain(runLoop);
  /* Not the caller's own: that may be a constant of a plug-in, and the engine keeps the name for longer. */
  modes_.push_back(Ref<const BQString>::adopt(bq::makeText(bq::textOf(mode))));
  if (transfer_ == nullptr) return;
  joinMode(modes_.back().get());
  signalIfPending();
}

void BQReadStream::unschedule(BQRunLoop* runLoop, const BQString* mode) {
  if (runLoop_.get() != runLoop) return;
  enterProcess();
  auto isMode = [mode](const auto& other) { return BQEqual(other.get(), mode); };
  auto found = std::find_if(modes_.begin(), modes_.end(), isMode);
  if (found == modes_.end()) return;
  if (transfer_ != nullptr) {
    BQRunLoopRemoveSource(runLoop, source_.get(), mode);
    if (isDriven_) engine_->releaseMode(mode);
  }
  modes_.erase(found);
  if (modes_.empty()) runLoop_ = nullptr;
}

bool BQReadStream::open() {
  /* A stream that is already at work is not disturbed. */
  if (std::exchange(wasOpened_, true)) return false;
  if (modes_.empty() || runLoop_.get() != BQRunLoopGetCurrent()) return fail(bq::kNotPossible);
  if (!bq::isUsable(request_->url.get())) return fail(bq::httpError(kBQStreamHTTPErrorBadURL));
  bq::TransferOptions options;
  BQStreamError unusable = properties_.readInto(options);
  if (bq::isError(unusable)) return fail(unusable);
  engine_ = bq::TransferEngine::current();
  if (engine_ == nullptr) return fail({kBQStreamErrorDomainPOSIX, EMFILE});
  source_ = makeSource();
  transfer_ = engine_->start(request_, options, {onChange, onLoss, this});
  if (transfer_ == nullptr) return fail({kBQStreamErrorDomainPOSIX, ENOMEM});
  isDriven_ = !transfer_->isFinished();
  for (const auto& mode : modes_) joinMode(mode.get());
  signalIfPending();
  return true;
}

bool BQReadStream::fail(BQStreamError error) {
  status_ = kBQStreamStatusError;
  error_ = error;
  return false;
}

Ref<BQRunLoopSource> BQReadStream::makeSource() {
  BQRunLoopSourceContext context{};
  context.info = this;
  context.perform = [](void* stream) { static_cast<BQReadStream*>(stream)->deliver(); };
  return Ref<BQRunLoopSource>::adopt(BQRunLoopSourceCreate(bq::kSourceOrder, &context));
}

void BQReadStream::joinMode(const BQString* mode) {
  BQRunLoopAddSource(runLoop_.get(), source_.get(), mode);
  if (isDriven_) engine_->retainMode(mode);
}

void BQReadStream::onChange(void* context) {
  static_cast<BQReadStream*>(context)->signal();
}

/* The thread ends. */
void BQReadStream::onLoss(void* context) {
  auto* stream = static_cast<BQReadStream*>(context);
  stream->response_ = stream->transfer_->response();
  stream->transfer_ = nullptr;
  stream->engine_ = nullptr;
  stream->status_ = kBQStreamStatusClosed;
  BQRunLoopSourceInvalidate(stream->source_.get());
}

/* What is to be reported at present, again for bytes until they are read. */
BQStreamEventType BQReadStream::nextEvent() const {
  if (transfer_ == nullptr) return kBQStreamEventNone;
  if (bq::isError(transfer_->error())) return kBQStreamEventErrorOccurred;
  if (transfer_->response() && !isOpenReported_) return kBQStreamEventOpenCompleted;
  if (transfer_->available() > 0) return kBQStreamEventHasBytesAvailable;
  return transfer_->isFinished() ? kBQStreamEventEndEncountered : kBQStreamEventNone;
}

/* Bytes that nobody wants to hear of would keep the loop busy for nothing. */
void BQReadStream::signalIfPending() {
  BQStreamEventType event = nextEvent();
  bool isUnwanted = event == kBQStreamEventHasBytesAvailable && !client_.wants(event);
  if (event != kBQStreamEventNone && !isUnwanted) signal();
}

/* A transfer has news several times in a row, and a signal takes a lock. */
void BQReadStream::signal() {
  if (!std::exchange(isSignalled_, true)) BQRunLoopSourceSignal(source_.get());
}

/* Every report may close, reschedule or release the stream, or run the loop. */
void BQReadStream::deliver() {
  auto self = Ref<BQReadStream>::retain(this);
  enterProcess();
  isSignalled_ = false;
  if (transfer_ != nullptr && transfer_->isFinished()) stopDriving();
  if (nextEvent() == kBQStreamEventOpenCompleted) {
    isOpenReported_ = true;
    report(kBQStreamEventOpenCompleted);
    bool wasReleased = BQGetRetainCount(this) == 1;
    if (wasReleased) return;
  }
  BQStreamEventType event = nextEvent();
  if (event == kBQStreamEventHasBytesAvailable) {
    report(event);
  } else if (event == kBQStreamEventEndEncountered) {
    endTransfer(kBQStreamStatusAtEnd);
    report(event);
  } else if (event == kBQStreamEventErrorOccurred) {
    endTransfer(kBQStreamStatusError);
    report(event);
  }
  signalIfPending();
}

void BQReadStream::report(BQStreamEventType event) {
  if (client_.wants(event)) client_.call(this, event);
}

void BQReadStream::close() {
  endTransfer(kBQStreamStatusClosed);
  if (wasOpened_) status_ = kBQStreamStatusClosed;
}

/* What has arrived whole needs no descriptor, which every pass would have to look at. */
void BQReadStream::stopDriving() {
  if (!std::exchange(isDriven_, false)) return;
  for (const auto& mode : modes_) engine_->releaseMode(mode.get());
}

/* In a child of the process the transfer is the parent's. */
void BQReadStream::enterProcess() {
  if (transfer_ != nullptr) bq::TransferEngine::enterProcess();
}

void BQReadStream::endTransfer(BQStreamStatus status) {
  enterProcess();
  if (transfer_ == nullptr) return;
  status_ = status;
  response_ = transfer_->response();
  error_ = transfer_->error();
  stopDriving();
  engine_->release(std::exchange(transfer_, nullptr));
  engine_ = nullptr;
  BQRunLoopSourceInvalidate(source_.get());
}

BQIndex BQReadStream::read(uint8_t* buffer, BQIndex size) {
  enterProcess();
  if (status() == kBQStreamStatusError) return -1;
  if (transfer_ == nullptr || buffer == nullptr || size <= 0) return 0;
  size_t count = transfer_->read(buffer, static_cast<size_t>(size));
  if (nextEvent() == kBQStreamEventEndEncountered) signalIfPending();
  return static_cast<BQIndex>(count);
}

bool BQReadStream::hasBytes() const {
  return transfer_ != nullptr && transfer_->available() > 0;
}

BQStreamStatus BQReadStream::status() const {
  if (transfer_ == nullptr) return status_;
  if (bq::isError(transfer_->error())) return kBQStreamStatusError;
  if (transfer_->isFinished() && transfer_->available() == 0) return kBQStreamStatusAtEnd;
  return transfer_->response() ? kBQStreamStatusOpen : kBQStreamStatusOpening;
}

BQStreamError BQReadStream::error() const {
  return transfer_ != nullptr ? transfer_->error() : error_;
}

using bq::asStream;

BQTypeID BQReadStreamGetTypeID(void) {
  static const BQTypeID typeID = _BQRuntimeRegisterClass(&bq::kReadStreamClass);
  return typeID;
}

BQReadStream* BQReadStreamCreateForHTTPRequest(const BQHTTPMessage* request) {
  if (!BQHTTPMessageIsRequest(request)) return nullptr;
  auto copy = Ref<BQHTTPMessage>::adopt(BQHTTPMessageCreateCopy(request));
  return bq::makeObject<BQReadStream>(BQReadStreamGetTypeID(), std::move(copy));
}

bool BQReadStreamSetProperty(BQReadStream* stream, const BQString* key, BQTypeRef value) {
  stream = asStream(stream);
  return stream != nullptr && stream->setProperty(key, value);
}

BQTypeRef BQReadStreamCopyProperty(BQReadStream* stream, const BQString* key) {
  stream = asStream(stream);
  return stream == nullptr ? nullptr : stream->copyProperty(key).release();
}

bool BQReadStreamSetClient(BQReadStream* stream, BQStreamEventType events,
                           BQReadStreamClientCallBack callback, const BQStreamClientContext* context) {
  stream = asStream(stream);
  return stream != nullptr && stream->setClient(events, callback, context);
}

void BQReadStreamScheduleWithRunLoop(BQReadStream* stream, BQRunLoop* runLoop, const BQString* mode) {
  stream = asStream(stream);
  if (stream != nullptr) stream->schedule(runLoop, mode);
}

void BQReadStreamUnscheduleFromRunLoop(BQReadStream* stream, BQRunLoop* runLoop, const BQString* mode) {
  stream = asStream(stream);
  if (stream != nullptr) stream->unschedule(runLoop, mode);
}

bool BQReadStreamOpen(BQReadStream* stream) {
  stream = asStream(stream);
  return stream != nullptr && stream->open();
}

void BQReadStreamClose(BQReadStream* stream) {
  stream = asStream(stream);
  if (stream != nullptr) stream->close();
}

BQIndex BQReadStreamRead(BQReadStream* stream, uint8_t* buffer, BQIndex size) {
  stream = asStream(stream);
  return stream == nullptr ? -1 : stream->read(buffer, size);
}

bool BQReadStreamHasBytesAvailable(BQReadStream* stream) {
  stream = asStream(stream);
  return stream != nullptr && stream->hasBytes();
}

BQStreamStatus BQReadStreamGetStatus(const BQReadStream* stream) {
  stream = asStream(stream);
  return stream == nullptr ? kBQStreamStatusNotOpen : stream->status();
}

BQStreamError BQReadStreamGetError(const BQReadStream* stream) {
  stream = asStream(stream);
  return stream == nullptr ? bq::kNoError : stream->error();
}
