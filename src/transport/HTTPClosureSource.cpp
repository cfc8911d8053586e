#include "transport/HTTPClosureSource.h"

#include <BQ/BQ.h>
#include <VX/VXConstants.h>

#include "api/base/WebServiceMethodInvocation.h"
#include "diag/BodyText.h"
#include "diag/Log.h"
#include "diag/Switches.h"
#include "transport/HTTPRequest.h"
#include "xml/ContentType.h"
#include "xml/Parsing.h"

namespace vx {
namespace {

constexpr BQStreamEventType kReadStreamReleventEvents =
    kBQStreamEventOpenCompleted | kBQStreamEventHasBytesAvailable | kBQStreamEventErrorOccurred |
    kBQStreamEventEndEncountered;

constexpr BQIndex kChunkSize = 1024;

const char* stateName(int32_t state) {
  static constexpr const char* stateNames[] = {"uninit", "waitforopen", "readintobuffer",
                                               "streamendencountered", "timedout"};
  return stateNames[static_cast<uint32_t>(state) % 5];
}

const char* eventName(BQStreamEventType event) {
  switch (event) {
    case kBQStreamEventNone:
      return "kBQStreamEventNone";
    case kBQStreamEventOpenCompleted:
      return "kBQStreamEventOpenCompleted";
    case kBQStreamEventHasBytesAvailable:
      return "kBQStreamEventHasBytesAvailable";
    case kBQStreamEventCanAcceptBytes:
      return "kBQStreamEventCanAcceptBytes";
    case kBQStreamEventErrorOccurred:
      return "kBQStreamEventErrorOccurred";
    case kBQStreamEventEndEncountered:
      return "kBQStreamEventEndEncountered";
    default:
      return "? unknown BQStreamEventType ?";
  }
}

bool wantsCapture(WebServiceMethodInvocation* invocation, const BQString* key) {
  return gVXDebug != 0 || invocation->getProperty(key) == kBQBooleanTrue;
}

Owned<const BQHTTPMessage> copyResponse(BQReadStream* stream) {
  BQTypeRef response = BQReadStreamCopyProperty(stream, kBQStreamPropertyHTTPResponseHeader);
  return own(static_cast<const BQHTTPMessage*>(response));
}

}  // namespace

HTTPClosureSource::HTTPClosureSource(WebServiceMethodInvocation* invocation, const BQURL* url)
    : ClosureSource(invocation),
      url(retain(url)),
      captureOutgoingHeaders(wantsCapture(invocation, kVXDebugOutgoingHeaders)),
      captureOutgoingBody(wantsCapture(invocation, kVXDebugOutgoingBody)),
      captureIncomingHeaders(wantsCapture(invocation, kVXDebugIncomingHeaders)),
      captureIncomingBody(wantsCapture(invocation, kVXDebugIncomingBody)) {}

HTTPClosureSource::~HTTPClosureSource() {
  if (readStream != nullptr) {
    BQReadStreamSetClient(readStream.get(), kReadStreamReleventEvents, nullptr, nullptr);
    BQReadStreamClose(readStream.get());
  }
  disarmTimer();
}

void HTTPClosureSource::perform() {
  if (isFinished()) return;
  /* An override or the callback may drop the last reference of the caller. */
  auto handle = retain(invocation->getOwner());
  if (gVXDebugVerbose != 0) _vxLogf("HTTPClosureSource::perform state %d (%s)", state, stateName(state));
  step();
  if (gVXDebugVerbose != 0)
    _vxLogf("HTTPClosureSource::perform new state state %d (%s)", state, stateName(state));
}

void HTTPClosureSource::schedule(BQRunLoop* toRunLoop, const BQString* mode) {
  places.push_back({toRunLoop, retain(mode)});
  if (readStream == nullptr || toRunLoop != runLoop.get()) return;
  BQReadStreamScheduleWithRunLoop(readStream.get(), toRunLoop, mode);
  BQRunLoopAddTimer(toRunLoop, timer.get(), mode);
}

void HTTPClosureSource::cancel(BQRunLoop* fromRunLoop, const BQString* mode) {
  std::erase_if(places, [=](const Place& place) {
    return place.runLoop == fromRunLoop && BQEqual(place.mode.get(), mode);
  });
  if (readStream == nullptr || fromRunLoop != runLoop.get()) return;
  BQReadStreamUnscheduleFromRunLoop(readStream.get(), fromRunLoop, mode);
  BQRunLoopRemoveTimer(fromRunLoop, timer.get(), mode);
}

void HTTPClosureSource::step() {
  switch (state) {
    case kUninitialized:
      begin();
      if (!initConnection()) return;
      state = kWaitForOpen;
      readBuffer = own(BQDataCreateMutable(0));
      return;
    case kWaitForOpen:
      if (gVXDebugVerbose != 0) {
        _vxLogf("We should not be ever in this state...  We care about bytes being available only.");
      }
      fail(BQSTR("Timed Out Waiting For Open"), kVXErrorTimedOut);
      return finish();
    case kReadIntoBuffer:
      return fillReadBuffer();
    case kStreamEndEncountered:
      return processBuffer();
    case kTimedOut:
      fail(BQSTR("Timed Out"), kVXErrorTimedOut);
      return finish();
    default:
      if (gVXDebugVerbose != 0) _vxLogf("Unknown state: %d", state);
      result->becomeFault(BQSTR("Uknown State"));
      return finish();
  }
}

void HTTPClosureSource::fail(const BQString* message, int32_t error) {
  result->becomeFault(message, BQStreamError{kVXErrorDomainReply, error});
}

bool HTTPClosureSource::initConnection() {
  const BQString* failure = createRequest();
  if (failure == nullptr) failure = openStream();
  if (failure != nullptr) {
    result->becomeFault(failure);
    finish();
    return false;
  }
  armTimer();
  joinModes();
  return true;
}

/* An override may have taken the source off the mode in which the call was begun. */
void HTTPClosureSource::joinModes() {
  for (const Place& place : places) {
    if (place.runLoop != runLoop.get()) continue;
    BQReadStreamScheduleWithRunLoop(readStream.get(), place.runLoop, place.mode.get());
    BQRunLoopAddTimer(place.runLoop, timer.get(), place.mode.get());
  }
  if (!isIn(runLoop.get(), runLoopMode.get())) cancel(runLoop.get(), runLoopMode.get());
}

const BQString* HTTPClosureSource::createRequest() {
  auto host = own(BQURLCopyHostName(url.get()));
  if (host == nullptr) return BQSTR("Missing host in URL");
  const BQString* contentType = nullptr;
  auto body = own(invocation->constructMessage(&contentType));
  auto ownedContentType = own(contentType);
  if (body == nullptr) return BQSTR("Can't serialize request");
  request = createHTTPRequest(invocation, url.get(), body.get(), contentType);
  if (request == nullptr) return BQSTR("Can't create HTTP message request");
  if (captureOutgoingBody) requestBody = std::move(body);
  return nullptr;
}

const BQString* HTTPClosureSource::openStream() {
  readStream = own(BQReadStreamCreateForHTTPRequest(request.get()));
  if (readStream == nullptr) return BQSTR("Can't create read stream from http message");
  configureStream(invocation, readStream.get());
  runLoop = retain(BQRunLoopGetCurrent());
  runLoopMode = own(BQRunLoopCopyCurrentMode(runLoop.get()));
  BQReadStreamScheduleWithRunLoop(readStream.get(), runLoop.get(), runLoopMode.get());
  BQStreamClientContext context = {0, this, _nullRetain, _nullRelease, _copyDescription};
  if (!BQReadStreamSetClient(readStream.get(), kReadStreamReleventEvents, _readStreamCallback, &context)) {
    return BQSTR("Can't set read stream client");
  }
  return BQReadStreamOpen(readStream.get()) ? nullptr : BQSTR("Can't issue read stream open");
}

void HTTPClosureSource::armTimer() {
  int32_t seconds = getTimeout(invocation);
  if (seconds <= 0) return;
  BQRunLoopTimerContext context = {0, this, nullptr, nullptr, nullptr};
  timer = own(BQRunLoopTimerCreate(BQAbsoluteTimeGetCurrent() + seconds, kBQAbsoluteTimeIntervalSince1970, 0,
                                   0, _timerCallback, &context));
  BQRunLoopAddTimer(runLoop.get(), timer.get(), runLoopMode.get());
}

void HTTPClosureSource::disarmTimer() {
  if (timer == nullptr) return;
  BQRunLoopTimerInvalidate(timer.get());
  timer = nullptr;
}

void HTTPClosureSource::readStreamCallback(BQStreamEventType event) {
  if (gVXDebugVerbose != 0) {
    _vxLogf("HTTPClosureSource::readStreamCallback type %d (%s), state %s\n", static_cast<int>(event),
            eventName(event), stateName(state));
  }
  if (isFinished()) {
    if (gVXDebugVerbose != 0) _vxLogf("We shouldn't be serviging any more callback signals");
    return;
  }
  switch (event) {
    case kBQStreamEventHasBytesAvailable:
      state = kReadIntoBuffer;
      return signal();
    case kBQStreamEventEndEncountered:
      state = kStreamEndEncountered;
      return signal();
    case kBQStreamEventOpenCompleted:
      return;
    case kBQStreamEventErrorOccurred:
      result->becomeFault(BQReadStreamGetError(readStream.get()));
      return finish();
    default:
      result->becomeFault(BQSTR("Unlikely state for a read stream"));
      return finish();
  }
}

void HTTPClosureSource::fillReadBuffer() {
  uint8_t chunk[kChunkSize];
  BQIndex length;
  do {
    length = BQReadStreamRead(readStream.get(), chunk, kChunkSize);
    if (length > 0) BQDataAppendBytes(readBuffer.get(), chunk, length);
  } while (length == kChunkSize);
}

void HTTPClosureSource::processBuffer() {
  unsigned long encoding = kBQStringEncodingUTF8;
  auto response = copyResponse(readStream.get());
  if (readBuffer == nullptr || response == nullptr) {
    result->becomeFault(BQSTR("Could not read any data"));
  } else {
    BQDictionarySetValue(result->resultDictionary.get(), kVXHTTPResponseMessage, response.get());
    encoding = getResponseCharset(response.get());
    judgeReply(response.get(), encoding);
  }
  recordCaptures(response.get(), encoding);
  if (gVXDebug != 0) printTransactionLog();
  finish();
}

void HTTPClosureSource::judgeReply(const BQHTTPMessage* response, unsigned long encoding) {
  unsigned char isXML = 0;
  unsigned char isText = 0;
  checkForXMLContent(response, &isXML, &isText);
  bool usable = isXML != 0 || isText != 0;
  BQIndex status = BQHTTPMessageGetResponseStatusCode(response);
  bool succeeded = status >= 200 && status <= 299;
  if (usable && (succeeded || status == 500)) {
    parseReply(isXML != 0, encoding);
  } else if (succeeded) {
    fail(BQSTR("The server did not return a 'text/xml' response."), kVXErrorUnusableReply);
  } else {
    fail(own(BQHTTPMessageCopyResponseStatusLine(response)).get(), kVXErrorUnusableReply);
  }
}

void HTTPClosureSource::parseReply(bool allowMissingDeclaration, unsigned long encoding) {
  const BQString* error = nullptr;
  auto tree = own(parseXML(readBuffer.get(), allowMissingDeclaration ? 1 : 0, encoding, &error));
  auto ownedError = own(error);
  if (tree != nullptr) {
    invocation->parseReply(result.get(), tree.get());
  } else {
    fail(error != nullptr ? error : BQSTR("Could not parse XML."), kVXErrorUnusableReply);
  }
}

void HTTPClosureSource::recordCaptures(const BQHTTPMessage* response, unsigned long encoding) {
  BQDictionary* dictionary = result->resultDictionary.get();
  if (captureOutgoingHeaders) {
    BQDictionarySetValue(dictionary, kVXDebugOutgoingHeaders,
                         own(BQHTTPMessageCopyAllHeaderFields(request.get())).get());
  }
  if (captureIncomingHeaders) {
    BQDictionarySetValue(dictionary, kVXDebugIncomingHeaders,
                         own(BQHTTPMessageCopyAllHeaderFields(response)).get());
  }
  if (captureOutgoingBody) {
    BQDictionarySetValue(dictionary, kVXDebugOutgoingBody,
                         own(prettyPrintXML(requestBody.get(), kBQStringEncodingUTF8)).get());
  }
  if (captureIncomingBody) {
    BQDictionarySetValue(dictionary, kVXDebugIncomingBody,
                         own(prettyPrintXML(readBuffer.get(), encoding)).get());
  }
}

void HTTPClosureSource::printTransactionLog() {
  auto copy = own(BQDictionaryCreateCopy(result->resultDictionary.get()));
  auto entry = [&copy](const BQString* key) { return BQDictionaryGetValue(copy.get(), key); };
  vxPrintf(BQSTR("Transaction Log:"));
  vxPrintf(BQSTR("Outgoing Headers: %@\n"), entry(kVXDebugOutgoingHeaders));
  vxPrintf(BQSTR("Outgoing Body: %@\n"), entry(kVXDebugOutgoingBody));
  vxPrintf(BQSTR("Incoming Headers: %@\n"), entry(kVXDebugIncomingHeaders));
  vxPrintf(BQSTR("Incoming Body: %@\n"), entry(kVXDebugIncomingBody));
  vxPrintf(BQSTR("\n"));
}

void HTTPClosureSource::timedOut() {
  if (gVXDebugVerbose != 0) _vxLogf("closure timed out: current state is %d", state);
  if (state < kUninitialized || state > kReadIntoBuffer) return;
  state = kTimedOut;
  signal();
}

/* The stream gives up its connection or its place in the queue. */
void HTTPClosureSource::finish() {
  disarmTimer();
  BQReadStreamClose(readStream.get());
  ClosureSource::finish();
}

void HTTPClosureSource::_readStreamCallback(BQReadStream*, BQStreamEventType event, void* info) {
  auto* object = static_cast<HTTPClosureSource*>(info);
  Entry entry(object);
  object->readStreamCallback(event);
}

void HTTPClosureSource::_timerCallback(BQRunLoopTimer*, void* info) {
  auto* object = static_cast<HTTPClosureSource*>(info);
  Entry entry(object);
  object->timedOut();
}

void* HTTPClosureSource::_nullRetain(void* info) {
  return info;
}

void HTTPClosureSource::_nullRelease(void*) {}

const BQString* HTTPClosureSource::_copyDescription(void* info) {
  return static_cast<HTTPClosureSource*>(info)->description();
}

}  // namespace vx
