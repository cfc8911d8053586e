/* Short forms for making calls and looking at their results in tests. */
#ifndef TRANSPORT_CALL_H
#define TRANSPORT_CALL_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <BQ/BQ.h>
#include <VX/VX.h>

#include "support/Constants.h"
#include "support/ScriptedPeer.h"
#include "support/Values.h"

namespace vx {

using namespace support;

/* An invocation of a test, released with it unless the test does it. */
class TestCall {
 public:
  explicit TestCall(const std::string& address, const BQString* protocol = kVXXMLRPCProtocol,
                    const BQString* method = BQSTR("test.method"))
      : invocation_(Value::adopt(VXMethodInvocationCreate(url(address), method, protocol))) {}
  TestCall(const TestCall&) = delete;
  TestCall& operator=(const TestCall&) = delete;

  TestCall& set(const BQString* key, BQTypeRef value) {
    VXMethodInvocationSetProperty(get(), key, value);
    return *this;
  }
  TestCall& set(const BQString* key, int value) { return set(key, integer(value).get()); }
  TestCall& setParameters(const Value& parameters, const BQArray* order = nullptr) {
    VXMethodInvocationSetParameters(get(), parameters, order);
    return *this;
  }

  VXMethodInvocationRef get() const { return invocation_.as<OpaqueVXMethodInvocationRef>(); }
  void release() { invocation_ = Value(); }

  Value invoke() { return Value::adopt(VXMethodInvocationInvoke(get())); }

 private:
  Value invocation_;
};

/* What a transport fault says: "message domain error"; the description of the result if it is none. */
inline std::string failureOf(const BQDictionary* result) {
  BQTypeRef extra = BQDictionaryGetValue(result, kVXFaultExtra);
  bool isTransportFault = VXMethodResultIsFault(result) &&
                          BQEqual(BQDictionaryGetValue(result, kVXFaultString), BQSTR("/BQStreamFault")) &&
                          text(BQDictionaryGetValue(result, kVXFaultCode)) == "-65794" &&
                          BQGetTypeID(extra) == BQDictionaryGetTypeID() &&
                          BQDictionaryGetCount(static_cast<const BQDictionary*>(extra)) == 3;
  if (!isTransportFault) return text(result);
  auto entry = [extra](const BQString* key) {
    return text(BQDictionaryGetValue(static_cast<const BQDictionary*>(extra), key));
  };
  return entry(kVXStreamErrorMessage) + " " + entry(kVXStreamErrorDomain) + " " + entry(kVXStreamErrorError);
}

/* The value that came back, or why the call failed. */
inline std::string valueOf(const BQDictionary* result) {
  if (VXMethodResultIsFault(result)) return failureOf(result);
  return text(BQDictionaryGetValue(result, kVXMethodInvocationResult));
}

/* The body of a reply that returns a string. */
inline std::string replyBody(const std::string& value) {
  return "<?xml version=\"1.0\"?><methodResponse><params><param><value><string>" + value +
         "</string></value></param></params></methodResponse>";
}

inline const std::string kOK = okResponse(replyBody("ok"));

/* A response that a call in the protocol ends well with. */
inline std::string anyReply(const BQString* protocol) {
  if (protocol == kVXXMLRPCProtocol) return kOK;
  return okResponse(
      "<?xml version=\"1.0\"?><e:Envelope xmlns:e=\"http://schemas.xmlsoap.org/soap/envelope/\"><e:Body>"
      "<test.methodResponse><Result>ok</Result></test.methodResponse></e:Body></e:Envelope>");
}

/* What a call came to: "ok", or why it failed. */
inline std::string outcomeOf(const BQDictionary* result) {
  bool isOutput = BQDictionaryGetValue(result, BQSTR("Result")) != nullptr;
  return isOutput && !VXMethodResultIsFault(result) ? "ok" : valueOf(result);
}

/* A call of a test that was or will be scheduled, and what it came to, as often as it came. */
class Scheduled {
 public:
  explicit Scheduled(const std::string& url) : address(url), call(url) {
    VXClientContext context = {0, this, retain, release, nullptr};
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

  /* How often the context was. */
  int retained = 0;
  int released = 0;
  const std::string address;
  TestCall call;
  std::vector<std::string> outcomes;
  void (*then)(Scheduled&) = nullptr;

 private:
  static Scheduled& of(void* info) { return **static_cast<Scheduled**>(info); }
  /* The library must use what this returns in place of the info. */
  static void* retain(void* info) {
    auto* scheduled = static_cast<Scheduled*>(info);
    ++scheduled->retained;
    return &scheduled->self_;
  }
  static void release(void* info) { ++of(info).released; }
  static void receive(VXMethodInvocationRef invocation, void* info, const BQDictionary* result) {
    Scheduled& scheduled = of(info);
    EXPECT_EQ(invocation, scheduled.call.get());
    scheduled.outcomes.push_back(outcomeOf(result));
    BQRelease(result);
    if (scheduled.then != nullptr) scheduled.then(scheduled);
  }

  Scheduled* self_ = this;
};

}  // namespace vx

#endif
