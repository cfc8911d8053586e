/* Callers whose functions call back into the library, or whose values are not what they should be. */
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "Call.h"
#include "api/MethodInvocationHandle.h"
#include "support/ScriptedPeer.h"
#include "values/Construction.h"

namespace vx {
namespace {

/* A call whose string parameters are handed to an override that does something odd, once. */
struct OddCall {
  VXMethodInvocationRef invocation = nullptr;
  Owned<BQDictionary> parameters = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
  Owned<BQDictionary> members = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
  Owned<BQArray> items = own(BQArrayCreateMutable(0));
  void (*act)(OddCall&) = nullptr;
  const BQString* (*answer)(BQTypeRef) = nullptr;
  int acts = 0;
  std::string inner;

  explicit OddCall(const BQString* protocol, const std::string& url) {
    auto endpoint = own(BQURLCreateWithString(makeText(url).get(), nullptr));
    invocation = VXMethodInvocationCreate(endpoint.get(), BQSTR("test.method"), protocol);
    for (int i = 0; i < 9; ++i) {
      auto name = makeText("name " + std::to_string(i)), value = makeText("value " + std::to_string(i));
      BQDictionarySetValue(members.get(), name.get(), value.get());
      BQArrayAppendValue(items.get(), value.get());
    }
    BQArrayAppendValue(items.get(), members.get());
    BQDictionarySetValue(parameters.get(), BQSTR("items"), items.get());
    BQDictionarySetValue(parameters.get(), BQSTR("last"), makeText("last value").get());
    VXMethodInvocationSetParameters(invocation, parameters.get(), nullptr);
    VXClientContext context = {0, this, nullptr, nullptr, nullptr};
    VXMethodInvocationAddSerializationOverride(invocation, BQStringGetTypeID(), override, &context);
    items = nullptr;
    members = nullptr;
    parameters = nullptr;
  }
  ~OddCall() { BQRelease(invocation); }
  OddCall(const OddCall&) = delete;
  OddCall& operator=(const OddCall&) = delete;

  static const BQString* override(VXMethodInvocationRef, BQTypeRef value, void* info) {
    auto* call = static_cast<OddCall*>(info);
    if (call->act != nullptr && call->acts++ == 0) call->act(*call);
    return call->answer != nullptr ? call->answer(value) : nullptr;
  }

  std::string invoke() { return outcomeOf(own(VXMethodInvocationInvoke(invocation)).get()); }
};

void ignoreResult(VXMethodInvocationRef, void* info, const BQDictionary* result) {
  *static_cast<std::string*>(info) = outcomeOf(result);
  BQRelease(result);
}

constexpr const char* kTakenAway = "The invocation was taken out of its synchronous call 2 -65794";

const struct {
  const char* what;
  void (*act)(OddCall&);
  const char* outcome;
  const char* inner;
} kOddActs[] = {
    {"invokes itself", [](OddCall& call) { call.inner = call.invoke(); }, "ok",
     "The invocation is being made already 2 -65794"},
    {"sets other parameters",
     [](OddCall& call) { VXMethodInvocationSetParameters(call.invocation, nullptr, nullptr); }, "ok", ""},
    {"schedules itself",
     [](OddCall& call) {
       VXMethodInvocationScheduleWithRunLoop(call.invocation, BQRunLoopGetCurrent(), BQSTR("VXSYNC"));
     },
     "Timed Out Waiting For Open -1 -65796", ""},
    {"sets another callback",
     [](OddCall& call) {
       VXClientContext context = {0, &call.inner, nullptr, nullptr, nullptr};
       VXMethodInvocationSetCallBack(call.invocation, ignoreResult, &context);
     },
     kTakenAway, "ok"},
    {"removes the callback",
     [](OddCall& call) { VXMethodInvocationSetCallBack(call.invocation, nullptr, nullptr); }, kTakenAway, ""},
    {"takes itself off the mode",
     [](OddCall& call) {
       VXMethodInvocationUnscheduleFromRunLoop(call.invocation, BQRunLoopGetCurrent(), BQSTR("VXSYNC"));
     },
     kTakenAway, ""},
    {"drops the last reference",
     [](OddCall& call) {
       BQRelease(call.invocation);
       call.invocation = nullptr;
     },
     "ok", ""},
    {"calls another",
     [](OddCall& call) {
       TestCall other("http://127.0.0.1:" + std::to_string(closedPort()) + "/");
       call.inner = outcomeOf(other.invoke().get());
     },
     "ok", "Stream Error 1 111"},
    {"runs the loop",
     [](OddCall&) {
       for (int i = 0; i < 3; ++i) BQRunLoopRunInMode(BQSTR("VXSYNC"), 0, true);
     },
     "ok", ""},
    {"adds overrides",
     [](OddCall& call) {
       for (int i = 0; i < 100; ++i) {
         VXMethodInvocationAddSerializationOverride(call.invocation, 1, nullptr, nullptr);
         VXMethodInvocationAddDeserializationOverride(call.invocation, BQSTR("*"), nullptr, nullptr, nullptr);
       }
     },
     "ok", ""},
    {"makes a document of itself",
     [](OddCall& call) { BQRelease(VXMethodInvocationCopySerialization(call.invocation)); }, "ok", ""},
};

TEST(OddCallers, OverridesMayCallBackIntoTheLibrary) {
  for (const BQString* protocol : kProtocols) {
    for (const auto& row : kOddActs) {
      SCOPED_TRACE(textOfObject(protocol) + ": an override that " + row.what);
      ScriptedPeer peer({replies({anyReply(protocol), anyReply(protocol)})});
      OddCall call(protocol, peer.url());
      call.act = row.act;
      EXPECT_EQ(call.invoke(), row.outcome);
      EXPECT_EQ(call.inner, row.inner);
      EXPECT_GT(call.acts, 0);
      EXPECT_EQ(call.invocation == nullptr ? "ok" : call.invoke(), "ok") << "the next call";
    }
  }
}

/* The containers that are being written lose what they hold, which nothing else holds. */
TEST(OddCallers, OverridesMayEmptyWhatIsBeingWritten) {
  for (const BQString* protocol : kProtocols) {
    for (int when = 1; when <= 19; ++when) {
      auto values = own(BQArrayCreateMutable(0));
      auto members = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
      for (int i = 0; i < 9; ++i) {
        auto text = makeText("text " + std::to_string(i));
        BQDictionarySetValue(members.get(), text.get(), makeText("value " + std::to_string(i)).get());
        BQArrayAppendValue(values.get(), text.get());
      }
      struct Holders {
        BQArray* values;
        BQDictionary* members;
        int left;
      } holders{values.get(), members.get(), when};
      BQArrayAppendValue(values.get(), members.get());
      members = nullptr;
      auto empty = [](VXMethodInvocationRef, BQTypeRef, void* info) -> const BQString* {
        auto* state = static_cast<Holders*>(info);
        if (--state->left != 0) return nullptr;
        BQDictionaryRemoveAllValues(state->members);
        BQArrayRemoveAllValues(state->values);
        return nullptr;
      };
      VXClientContext context = {0, &holders, nullptr, nullptr, nullptr};
      auto handle = own(static_cast<const void*>(VXProtocolHandlerCreate(nullptr, protocol)));
      auto handler = static_cast<VXProtocolHandlerRef>(const_cast<void*>(handle.get()));
      VXProtocolHandlerSetSerializationOverride(handler, BQStringGetTypeID(), empty, &context);
      const void *name = BQSTR("p"), *value = values.get();
      auto parameters = own(BQDictionaryCreate(&name, &value, 1));
      auto order = own(BQArrayCreate(&name, 1));
      auto document = own(
          VXProtocolHandlerCopyRequestDocument(handler, BQSTR("m"), parameters.get(), order.get(), nullptr));
      EXPECT_NE(document, nullptr);
      EXPECT_LE(holders.left, when == 19 ? 1 : 0);
    }
  }
}

TEST(OddCallers, OverridesMayReturnNonsense) {
  const std::pair<const char*, const BQString* (*)(BQTypeRef)> answers[] = {
      {"a number",
       [](BQTypeRef) {
         int number = 5;
         return reinterpret_cast<const BQString*>(BQNumberCreate(kBQNumberIntType, &number));
       }},
      {"the null object", [](BQTypeRef) { return reinterpret_cast<const BQString*>(kBQNull); }},
      {"the value itself", [](BQTypeRef value) { return static_cast<const BQString*>(BQRetain(value)); }},
      {"an array that holds it",
       [](BQTypeRef value) { return reinterpret_cast<const BQString*>(BQArrayCreate(&value, 1)); }},
  };
  for (const BQString* protocol : kProtocols) {
    for (const auto& [what, answer] : answers) {
      SCOPED_TRACE(what);
      ScriptedPeer peer({reply(anyReply(protocol))});
      OddCall call(protocol, peer.url());
      call.answer = answer;
      EXPECT_EQ(call.invoke(), "ok");
    }
  }
}

TEST(OddCallers, OverridesOfNoClassAreNotCalled) {
  auto fail = [](VXMethodInvocationRef, BQTypeRef, void*) -> const BQString* {
    ADD_FAILURE() << "called for a value that is not there";
    return nullptr;
  };
  for (const BQString* protocol : kProtocols) {
    ScriptedPeer peer({reply(anyReply(protocol))});
    TestCall call(peer.url(), protocol);
    VXMethodInvocationAddSerializationOverride(call.get(), 0, fail, nullptr);
    const void *name = BQSTR("a"), *value = kBQNull;
    auto order = own(BQArrayCreate(&name, 1));
    VXMethodInvocationSetParameters(call.get(), own(BQDictionaryCreate(&name, &value, 1)).get(), order.get());
    EXPECT_EQ(outcomeOf(call.invoke().get()), "ok");
    VXMethodInvocationSetParameters(call.get(), nullptr, order.get());
    auto document = own(call.get()->wrapped->constructMessage(nullptr));
    EXPECT_NE(document, nullptr);
  }
}

/* Any key may hold any value: what is of another kind than it should be counts as unset. */
TEST(OddCallers, PropertiesMayBeOfAnyKind) {
  const BQString* const keys[] = {kVXXMLRPCProtocol,
                                  kVXSOAP1999Protocol,
                                  kVXSOAP2001Protocol,
                                  kVXMethodInvocationResult,
                                  kVXFaultString,
                                  kVXFaultCode,
                                  kVXFaultExtra,
                                  kVXHTTPResponseMessage,
                                  kVXNetworkStreamFaultString,
                                  kVXStreamErrorMessage,
                                  kVXStreamErrorDomain,
                                  kVXStreamErrorError,
                                  kVXHTTPMessage,
                                  kVXPostingMethod,
                                  kVXHTTPVersion,
                                  kVXHTTPFollowsRedirects,
                                  kVXHTTPProxy,
                                  kVXHTTPCertificateAuthorityFile,
                                  kVXHTTPReplySizeLimit,
                                  kVXHTTPExtraHeaders,
                                  kVXMethodInvocationTimeoutValue,
                                  kVXAuthInfo,
                                  kVXAuthInfo_user,
                                  kVXAuthInfo_password,
                                  kVXAuthInfo_authScheme,
                                  kVXAuthInfo_forProxy,
                                  kVXDebugOutgoingHeaders,
                                  kVXDebugOutgoingBody,
                                  kVXDebugIncomingHeaders,
                                  kVXDebugIncomingBody,
                                  kVXSOAPMessageHeaders,
                                  kVXSOAPMethodNamespaceURI,
                                  kVXSOAPBodyEncodingStyle,
                                  kVXSOAPStyleRPC,
                                  kVXSOAPStyleDoc,
                                  kVXMethodInvocationResultParameterName,
                                  kVXRecordParameterOrder,
                                  kVXRecordNamespaceURI,
                                  kVXRecordType};
  float notANumber = __builtin_nanf("");
  int64_t huge = INT64_MAX;
  const void* null = nullptr;
  const Owned<const void> values[] = {
      own<const void>(BQRetain(kBQNull)),
      own<const void>(BQRetain(kBQBooleanFalse)),
      own<const void>(BQNumberCreate(kBQNumberFloatType, &notANumber)),
      own<const void>(BQNumberCreate(kBQNumberSInt64Type, &huge)),
      own<const void>(BQDateCreate(1e300)),
      own<const void>(BQDataCreate("\0\xff", 2)),
      own<const void>(BQArrayCreate(&null, 1)),
      own<const void>(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys)),
      own<const void>(BQRunLoopCopyCurrentMode(BQRunLoopGetCurrent())),
      own<const void>(BQRetain(BQRunLoopGetCurrent())),
  };
  for (const BQString* protocol : kProtocols) {
    std::vector<std::string> answers(std::size(keys) * std::size(values), anyReply(protocol));
    ScriptedPeer peer({replies(answers)});
    for (const BQString* key : keys) {
      for (const auto& value : values) {
        TestCall call(peer.url(), protocol);
        call.set(key, value.get());
        EXPECT_EQ(outcomeOf(call.invoke().get()), "ok")
            << textOfObject(key) << " " << textOfObject(value.get());
      }
    }
  }
}

/* What structures, parameters and their orders hold may be anything, themselves included. */
TEST(OddCallers, ValuesMayBeOfAnyKind) {
  for (const BQString* protocol : kProtocols) {
    int number = 7;
    auto key = own(BQNumberCreate(kBQNumberIntType, &number));
    auto members = own(BQDictionaryCreateMutable(0, kBQDictionaryRetainKeys));
    const BQTypeRef odds[] = {key.get(), kBQNull, kBQBooleanTrue, BQRunLoopGetCurrent()};
    for (BQTypeRef odd : odds) {
      BQDictionarySetValue(members.get(), odd, odd);
      for (const BQString* control : {kVXRecordParameterOrder, kVXRecordNamespaceURI, kVXRecordType}) {
        BQDictionarySetValue(members.get(), control, odd);
      }
      ScriptedPeer peer({reply(anyReply(protocol))});
      TestCall call(peer.url(), protocol);
      VXMethodInvocationSetParameters(call.get(), members.get(), nullptr);
      EXPECT_EQ(outcomeOf(call.invoke().get()), "ok") << textOfObject(odd);
    }
  }
}

using Outcomes = std::vector<std::string>;

/* Each does something inside the callback that ends its own call. */
TEST(OddCallers, CallbacksMayDoAnythingToTheirInvocation) {
  const struct {
    const char* what;
    void (*then)(Scheduled&);
    size_t requests;
  } rows[] = {
      {"release it", [](Scheduled& self) { self.call.release(); }, 1},
      {"take it off", [](Scheduled& self) { self.unschedule(); }, 1},
      {"take it off and release it",
       [](Scheduled& self) {
         self.unschedule();
         self.call.release();
       },
       1},
      {"remove the callback",
       [](Scheduled& self) { VXMethodInvocationSetCallBack(self.call.get(), nullptr, nullptr); }, 1},
      {"schedule it again",
       [](Scheduled& self) {
         if (self.outcomes.size() == 1) self.schedule();
       },
       2},
      {"invoke it", [](Scheduled& self) { self.outcomes.push_back(outcomeOf(self.call.invoke().get())); }, 2},
      {"invoke it and release it",
       [](Scheduled& self) {
         self.outcomes.push_back(outcomeOf(self.call.invoke().get()));
         self.call.release();
       },
       2},
  };
  for (bool succeeds : {true, false}) {
    for (const auto& row : rows) {
      SCOPED_TRACE(std::string(row.what) + (succeeds ? ", result" : ", error"));
      ScriptedPeer peer({succeeds ? replies({okResponse(replyBody("ok")), okResponse(replyBody("ok"))})
                                  : Script().expectRequest().send("x")});
      Scheduled call(peer.url());
      call.then = row.then;
      call.schedule();
      EXPECT_TRUE(call.runUntil(kBQRunLoopDefaultMode, [&] { return call.outcomes.size() == row.requests; }));
      for (int i = 0; i < 5; ++i) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, true);
      EXPECT_EQ(call.outcomes.size(), row.requests);
      EXPECT_EQ(peer.requests().size(), row.requests);
      EXPECT_EQ(call.outcomes.front() == "ok", succeeds) << call.outcomes.front();
    }
  }
}

TEST(OddCallers, CallOnTwoModesGoesOnInEither) {
  ScriptedPeer peer({replies(Outcomes(4, okResponse(replyBody("ok"))))});
  const BQString *first = BQSTR("first"), *second = BQSTR("second");
  for (const BQString* last : {first, second}) {
    for (bool leavesFirst : {false, true}) {
      Scheduled call(peer.url());
      call.schedule(first);
      call.schedule(second);
      BQRunLoopRunInMode(first, 0, true);
      if (leavesFirst) call.unschedule(first);
      EXPECT_TRUE(call.runUntilDelivered(leavesFirst ? second : last));
      for (const BQString* mode : {first, second}) BQRunLoopRunInMode(mode, 0, true);
      EXPECT_EQ(call.outcomes, Outcomes{"ok"});
    }
  }
}

TEST(OddCallers, CallTakenOffItsModeLeavesItQuiet) {
  Gate gate;
  ScriptedPeer peer({Script().expectRequest().send("HTTP/1.1 200 OK\r\n\r\n<a>").waitFor(gate)});
  Scheduled call(peer.url());
  call.call.set(kVXMethodInvocationTimeoutValue, 60);
  call.schedule();
  ASSERT_TRUE(call.runUntil(kBQRunLoopDefaultMode, [&] { return peer.requests().size() == 1; }));
  call.unschedule();
  EXPECT_EQ(BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, false), kBQRunLoopRunFinished);
  EXPECT_TRUE(call.outcomes.empty());
  call.call.release();
}

/* In each state of the scheduled call, which is given up. */
TEST(OddCallers, InvokingAScheduledCallMakesANewOne) {
  for (int passes = 0; passes < 4; ++passes) {
    Gate gate;
    Script given = Script().expectRequest().send("HTTP/1.1 200 OK\r\n\r\n<").waitFor(gate);
    Script answered = reply(okResponse(replyBody("ok")));
    ScriptedPeer peer({passes == 0 ? answered : given, answered});
    Scheduled call(peer.url());
    call.schedule();
    for (int i = 0; i < passes; ++i) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 5, true);
    EXPECT_EQ(outcomeOf(call.call.invoke().get()), "ok") << passes;
    EXPECT_TRUE(call.outcomes.empty());
  }
}

/* A context that, when it is dropped, sets the callback again. */
struct Rebound {
  VXMethodInvocationRef invocation;
  int times = 0;
  int held = 0;

  VXClientContext context() {
    return {0, this,
            [](void* info) -> void* {
              ++static_cast<Rebound*>(info)->held;
              return info;
            },
            [](void* info) {
              auto* self = static_cast<Rebound*>(info);
              --self->held;
              VXClientContext again = self->context();
              if (self->times++ < 3) VXMethodInvocationSetCallBack(self->invocation, nullptr, &again);
            },
            nullptr};
  }
};

TEST(OddCallers, ContextsThatSetTheCallbackAgainAreNotLost) {
  TestCall call("http://127.0.0.1/");
  Rebound rebound{call.get()};
  VXClientContext context = rebound.context();
  VXMethodInvocationSetCallBack(call.get(), nullptr, &context);
  VXMethodInvocationSetCallBack(call.get(), nullptr, nullptr);
  EXPECT_GT(rebound.times, 1);
  rebound.times = 3;
  VXMethodInvocationSetCallBack(call.get(), nullptr, nullptr);
  EXPECT_EQ(rebound.held, 0);
}

TEST(OddCallers, ContextsMayHoldTheirInvocation) {
  ScriptedPeer peer({reply(okResponse(replyBody("ok")))});
  TestCall call(peer.url());
  VXMethodInvocationRef invocation = call.get();
  VXClientContext context = {0, invocation, [](void* info) { return const_cast<void*>(BQRetain(info)); },
                             [](void* info) { BQRelease(info); }, nullptr};
  VXMethodInvocationSetCallBack(invocation, nullptr, &context);
  call.release();
  EXPECT_EQ(outcomeOf(own(VXMethodInvocationInvoke(invocation)).get()), "ok");
}

/* The thread ends while its calls wait in some state; their memory goes with it. */
TEST(OddCallers, ThreadsMayEndWithCallsUnderWay) {
  ScriptedPeer peer({Script().expectRequest().send("HTTP/1.1 200 OK\r\n\r\n<").waitForClose()});
  for (int passes = 0; passes < 4; ++passes) {
    for (bool releasesFirst : {false, true}) {
      std::unique_ptr<Scheduled> kept;
      std::thread([&] {
        kept = std::make_unique<Scheduled>(peer.url());
        kept->schedule();
        for (int i = 0; i < passes; ++i) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 5, true);
        if (releasesFirst) kept = nullptr;
      }).join();
      EXPECT_TRUE(kept == nullptr || kept->outcomes.empty());
    }
  }
}

/* More calls than a process has descriptors for wait for each other. */
TEST(OddCallers, TenThousandCallsAtOnceAreAllServed) {
  constexpr size_t kCalls = 10000;
  std::vector<std::string> answers(kCalls, okResponse(replyBody("ok")));
  ScriptedPeer peer({replies(answers)});
  std::vector<std::unique_ptr<Scheduled>> calls;
  for (size_t i = 0; i < kCalls; ++i) {
    calls.push_back(std::make_unique<Scheduled>(peer.url()));
    calls.back()->schedule();
  }
  for (auto& call : calls) EXPECT_TRUE(call->runUntilDelivered());
  for (auto& call : calls) EXPECT_EQ(call->outcomes, Outcomes{"ok"});
  EXPECT_EQ(peer.requests().size(), kCalls);
  EXPECT_LE(peer.connectionCount(), 128u);
}

}  // namespace
}  // namespace vx
