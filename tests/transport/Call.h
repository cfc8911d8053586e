/* Short forms for making calls and looking at their results in tests. */
#ifndef TRANSPORT_CALL_H
#define TRANSPORT_CALL_H

#include <string>
#include <vector>

#include <BQ/BQ.h>
#include <VX/VX.h>

#include "support/ScriptedPeer.h"
#include "values/Owned.h"

namespace vx {

inline Owned<const BQString> makeText(const std::string& text) {
  return own(BQStringCreateWithUTF8(text.data(), static_cast<BQIndex>(text.size())));
}

inline std::string textOfObject(BQTypeRef object) {
  auto description = own(BQCopyDescription(object));
  return BQStringGetUTF8Ptr(description.get());
}

/* An invocation of a test, released with it unless the test does it. */
class TestCall {
 public:
  explicit TestCall(const std::string& url, const BQString* protocol = kVXXMLRPCProtocol) {
    auto endpoint = own(BQURLCreateWithString(makeText(url).get(), nullptr));
    invocation_ = VXMethodInvocationCreate(endpoint.get(), BQSTR("test.method"), protocol);
  }
  ~TestCall() { release(); }
  TestCall(const TestCall&) = delete;
  TestCall& operator=(const TestCall&) = delete;

  TestCall& set(const BQString* key, BQTypeRef value) {
    VXMethodInvocationSetProperty(invocation_, key, value);
    return *this;
  }
  TestCall& set(const BQString* key, int value) {
    return set(key, own(BQNumberCreate(kBQNumberIntType, &value)).get());
  }

  VXMethodInvocationRef get() const { return invocation_; }
  void release() {
    BQRelease(invocation_);
    invocation_ = nullptr;
  }

  Owned<const BQDictionary> invoke() { return own(VXMethodInvocationInvoke(invocation_)); }

 private:
  VXMethodInvocationRef invocation_;
};

/* What a transport fault says: "message domain error"; the description of the result if it is none. */
inline std::string failureOf(const BQDictionary* result) {
  BQTypeRef extra = BQDictionaryGetValue(result, kVXFaultExtra);
  bool isTransportFault = VXMethodResultIsFault(result) &&
                          BQEqual(BQDictionaryGetValue(result, kVXFaultString), BQSTR("/BQStreamFault")) &&
                          textOfObject(BQDictionaryGetValue(result, kVXFaultCode)) == "-65794" &&
                          BQGetTypeID(extra) == BQDictionaryGetTypeID() &&
                          BQDictionaryGetCount(static_cast<const BQDictionary*>(extra)) == 3;
  if (!isTransportFault) return textOfObject(result);
  auto entry = [extra](const BQString* key) {
    return textOfObject(BQDictionaryGetValue(static_cast<const BQDictionary*>(extra), key));
  };
  return entry(kVXStreamErrorMessage) + " " + entry(kVXStreamErrorDomain) + " " + entry(kVXStreamErrorError);
}

inline std::string valueOf(const BQDictionary* result) {
  if (VXMethodResultIsFault(result)) return textOfObject(result);
  return textOfObject(BQDictionaryGetValue(result, kVXMethodInvocationResult));
}

/* The body of a reply that returns a string. */
inline std::string replyBody(const std::string& text) {
  return "<?xml version=\"1.0\"?><methodResponse><params><param><value><string>" + text +
         "</string></value></param></params></methodResponse>";
}

inline const BQString* const kProtocols[] = {kVXXMLRPCProtocol, kVXSOAP1999Protocol, kVXSOAP2001Protocol};

/* A response that a call in the protocol ends well with. */
inline std::string anyReply(const BQString* protocol) {
  if (protocol == kVXXMLRPCProtocol) return okResponse(replyBody("ok"));
  return okResponse(
      "<?xml version=\"1.0\"?><e:Envelope xmlns:e=\"http://schemas.xmlsoap.org/soap/envelope/\"><e:Body>"
      "<test.methodResponse><Result>ok</Result></test.methodResponse></e:Body></e:Envelope>");
}

/* What a call came to: "ok", or why it failed. */
inline std::string outcomeOf(const BQDictionary* result) {
  if (VXMethodResultIsFault(result)) return failureOf(result);
  bool isOutput = BQDictionaryGetValue(result, BQSTR("Result")) != nullptr;
  return isOutput || valueOf(result) == "ok" ? "ok" : textOfObject(result);
}

/* A call of a test that was or will be scheduled, and what it came to, as often as it came. */
class Scheduled {
 public:
  explicit Scheduled(const std::string& url) : call(url) {
    VXClientContext context = {0, this, nullptr, nullptr, nullptr};
    VXMethodInvocationSetCallBack(call.get(), receive, &context);
  }

  void schedule(const BQString* mode = kBQRunLoopDefaultMode) {
    VXMethodInvocationScheduleWithRunLoop(call.get(), BQRunLoopGetCurrent(), mode);
  }
  void unschedule(const BQString* mode = kBQRunLoopDefaultMode) {
    VXMethodInvocationUnscheduleFromRunLoop(call.get(), BQRunLoopGetCurrent(), mode);
  }
  /* Runs a mode until something holds, for a while at most. */
  template <class Condition>
  bool runUntil(const BQString* mode, Condition condition) {
    BQAbsoluteTime end = BQAbsoluteTimeGetCurrent() + 20;
    while (!condition() && BQAbsoluteTimeGetCurrent() < end) BQRunLoopRunInMode(mode, 5, true);
    return condition();
  }
  bool runUntilDelivered(const BQString* mode = kBQRunLoopDefaultMode) {
    return runUntil(mode, [this] { return !outcomes.empty(); });
  }

  TestCall call;
  std::vector<std::string> outcomes;
  void (*then)(Scheduled&) = nullptr;

 private:
  static void receive(VXMethodInvocationRef, void* info, const BQDictionary* result) {
    auto* scheduled = static_cast<Scheduled*>(info);
    scheduled->outcomes.push_back(outcomeOf(result));
    BQRelease(result);
    if (scheduled->then != nullptr) scheduled->then(*scheduled);
  }
};

}  // namespace vx

#endif
