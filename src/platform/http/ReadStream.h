/* The stream: a transfer, who is told about it, and the modes in which that happens. */
#ifndef BQ_HTTP_READ_STREAM_H
#define BQ_HTTP_READ_STREAM_H

#include <vector>

#include <BQ/BQReadStream.h>
#include <BQ/BQRunLoop.h>

#include "platform/http/HTTPMessage.h"
#include "platform/http/StreamProperties.h"
#include "platform/http/TransferEngine.h"
#include "platform/object/Object.h"

namespace bq {

/* A registered client, and the reference to its info. */
class StreamClient {
 public:
  StreamClient() = default;
  StreamClient(BQStreamEventType events, BQReadStreamClientCallBack callback,
               const BQStreamClientContext* context);
  StreamClient(StreamClient&& other) noexcept;
  StreamClient& operator=(StreamClient&& other) noexcept;
  ~StreamClient();

  bool wants(BQStreamEventType event) const { return (events_ & event) != 0; }
  void call(BQReadStream* stream, BQStreamEventType event) const { callback_(stream, event, info_); }

 private:
  BQStreamEventType events_ = kBQStreamEventNone;
  BQReadStreamClientCallBack callback_ = nullptr;
  void* info_ = nullptr;
  void (*releaseInfo_)(void*) = nullptr;
};

}  // namespace bq

struct BQReadStream : bq::Object {
  BQReadStream(BQTypeID typeID, bq::Ref<BQHTTPMessage> request);
  ~BQReadStream();

  bool setProperty(const BQString* key, BQTypeRef value);
  bq::Ref<const void> copyProperty(const BQString* key) const;
  bool setClient(BQStreamEventType events, BQReadStreamClientCallBack callback,
                 const BQStreamClientContext* context);
  void schedule(BQRunLoop* runLoop, const BQString* mode);
  void unschedule(BQRunLoop* runLoop, const BQString* mode);
  bool open();
  void close();
  BQIndex read(uint8_t* buffer, BQIndex size);
  bool hasBytes() const;
  BQStreamStatus status() const;
  BQStreamError error() const;

 private:
  static void onChange(void* stream);
  static void onLoss(void* stream);

  bool fail(BQStreamError error);
  bq::Ref<BQRunLoopSource> makeSource();
  void joinMode(const BQString* mode);
  BQStreamEventType nextEvent() const;
  void signalIfPending();
  void signal();
  void deliver();
  void report(BQStreamEventType event);
  void stopDriving();
  void enterProcess();
  void endTransfer(BQStreamStatus status);

  bq::Ref<BQHTTPMessage> request_;
  bq::StreamProperties properties_;
  bq::StreamClient client_;
  bq::Ref<BQRunLoop> runLoop_;
  std::vector<bq::Ref<const BQString>> modes_;

  bool wasOpened_ = false;
  bool isOpenReported_ = false;
  /* Whether the engine works in the stream's modes. */
  bool isDriven_ = false;

  /* Only while there is something to receive or to report. */
  bq::TransferEngine* engine_ = nullptr;
  bq::Transfer* transfer_ = nullptr;
  bq::Ref<BQRunLoopSource> source_;
  bool isSignalled_ = false;

  /* What is left afterwards. */
  BQStreamStatus status_ = kBQStreamStatusNotOpen;
  BQStreamError error_ = bq::kNoError;
  bq::Ref<BQHTTPMessage> response_;
};

#endif
