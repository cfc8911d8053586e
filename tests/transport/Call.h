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

/* What a call came to: its value, "message domain error" of a failure of the transport, or all of it. */
inline std::string outcomeOf(const BQDictionary* result) {
  auto entry = [](BQTypeRef holder, const BQString* key) {
    return BQDictionaryGetValue(static_cast<const BQDictionary*>(holder), key);
  };
  BQTypeRef value = entry(result, BQSTR("Result")), extra = entry(result, kVXFaultExtra);
  if (value == nullptr) value = entry(result, kVXMethodInvocationResult);
  if (!VXMethodResultIsFault(result) && value != nullptr) return text(value);
  if (text(entry(result, kVXFaultString)) != "/BQStreamFault" ||
      text(entry(result, kVXFaultCode)) != "-65794" || BQGetTypeID(extra) != BQDictionaryGetTypeID() ||
      BQDictionaryGetCount(static_cast<const BQDictionary*>(extra)) != 3) {
    return text(result);
  }
  return text(entry(extra, kVXStreamErrorMessage)) + " " + text(entry(extra, kVXStreamErrorDomain)) + " " +
         text(entry(extra, kVXStreamErrorError));
}

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
  void schedule(const BQString* mode = kBQRunLoopDefaultMode) {
    VXMethodInvocationScheduleWithRunLoop(get(), BQRunLoopGetCurrent(), mode);
  }
  void unschedule(const BQString* mode = kBQRunLoopDefaultMode) {
    VXMethodInvocationUnscheduleFromRunLoop(get(), BQRunLoopGetCurrent(), mode);
  }

  VXMethodInvocationRef get() const { return invocation_.as<OpaqueVXMethodInvocationRef>(); }
  void release() { invocation_ = Value(); }
  Value result() { return Value::adopt(VXMethodInvocationInvoke(get())); }
  std::string invoke() { return outcomeOf(result()); }

 private:
  Value invocation_;
};

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

/* A call of a test that was or will be scheduled, and what it came to, as often as it came. */
class Scheduled : public TestCall {
 public:
  explicit Scheduled(const std::string& url) : TestCall(url), address(url) {
    VXClientContext context = {0, this, retain, release, nullptr};
    VXMethodInvocationSetCallBack(get(), receive, &context);
  }

  bool runUntilDelivered(const BQString* mode = kBQRunLoopDefaultMode) {
    return runUntil([this] { return !outcomes.empty(); }, mode);
  }

  using TestCall::release;

  /* How often the context was. */
  int retained = 0;
  int released = 0;
  const std::string address;
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
    EXPECT_EQ(invocation, scheduled.get());
    scheduled.outcomes.push_back(outcomeOf(result));
    BQRelease(result);
    if (scheduled.then != nullptr) scheduled.then(scheduled);
  }

  Scheduled* self_ = this;
};

}  // namespace vx

#endif
