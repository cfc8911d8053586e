/* A source that carries one call over HTTP. */
#ifndef VX_TRANSPORT_HTTP_CLOSURE_SOURCE_H
#define VX_TRANSPORT_HTTP_CLOSURE_SOURCE_H

#include <BQ/BQRunLoop.h>
#include <BQ/BQStream.h>

#include <vector>

#include "transport/ClosureSource.h"

namespace vx {

/*
 * A state machine. The callbacks of the read stream and of the timer only note what happened and
 * signal the source; the work is done in perform.
 */
class HTTPClosureSource : public ClosureSource {
 public:
  enum State : int32_t {
    kUninitialized = 0,        /* nothing done yet */
    kWaitForOpen = 1,          /* the request is on its way */
    kReadIntoBuffer = 2,       /* bytes of the reply have arrived */
    kStreamEndEncountered = 3, /* the reply has arrived */
    kTimedOut = 4,             /* the timer fired */
  };

  /* The properties that switch captures on are read here, and only here. */
  HTTPClosureSource(WebServiceMethodInvocation* invocation, const BQURL* url);

  void perform() override;
  /* Schedules the stream and the timer in every mode of the source, and takes them off with it. */
  void schedule(BQRunLoop* runLoop, const BQString* mode) override;
  void cancel(BQRunLoop* runLoop, const BQString* mode) override;
  void finish() override;

  int32_t getState() const { return state; }
  void setState(int32_t newState) { state = newState; }
  void readStreamCallback(BQStreamEventType event);
  void timedOut();

 protected:
  ~HTTPClosureSource() override;

 private:
  void step();
  bool initConnection();
  /* Each returns a message if it fails. */
  const BQString* createRequest();
  const BQString* openStream();
  void joinModes();
  void armTimer();
  void disarmTimer();
  void fillReadBuffer();
  void processBuffer();
  void judgeReply(const BQHTTPMessage* response, unsigned long encoding);
  void parseReply(bool allowMissingDeclaration, unsigned long encoding);
  void recordCaptures(const BQHTTPMessage* response, unsigned long encoding);
  void printTransactionLog();
  void fail(const BQString* message, int32_t error);

  static void _readStreamCallback(BQReadStream* stream, BQStreamEventType event, void* info);
  static void _timerCallback(BQRunLoopTimer* timer, void* info);
  static void* _nullRetain(void* info);
  static void _nullRelease(void* info);
  static const BQString* _copyDescription(void* info);

  struct Place {
    BQRunLoop* runLoop;
    Owned<const BQString> mode;
  };

  int32_t state = kUninitialized;
  Owned<const BQURL> url;
  Owned<BQHTTPMessage> request;
  Owned<BQData> readBuffer;
  Owned<BQReadStream> readStream;
  /* Where the source is. */
  std::vector<Place> places;
  /* Where the call was begun. */
  Owned<BQRunLoop> runLoop;
  Owned<const BQString> runLoopMode;
  Owned<const BQData> requestBody;
  bool captureOutgoingHeaders;
  bool captureOutgoingBody;
  bool captureIncomingHeaders;
  bool captureIncomingBody;
  Owned<BQRunLoopTimer> timer;
};

}  // namespace vx

#endif
