/* Callers whose functions call back into the library, or whose values are not what they should be. */
#include <cmath>
#include <cstdlib>

#include "Call.h"

namespace vx {
namespace {

const BQString* const kElsewhere = BQSTR("elsewhere");
const BQString* const kSynchronous = BQSTR("VXSYNC");

/* Several structures' worth of texts, which nothing else holds. */
Value manyTexts() {
  Value items = array({}), members = dictionary({});
  for (int i = 0; i < 9; ++i) {
    Value value = string("value " + std::to_string(i));
    BQDictionarySetValue(members.as<BQDictionary>(), string("name " + std::to_string(i)), value.get());
    BQArrayAppendValue(items.as<BQArray>(), value.get());
  }
  BQArrayAppendValue(items.as<BQArray>(), members.get());
  return items;
}

/* A call whose string parameters are handed to an override, which does something odd at one of them. */
struct OddCall : TestCall {
  void (*act)(OddCall&) = nullptr;
  const BQString* (*answer)(BQTypeRef) = nullptr;
  int when = 1, acts = 0;
  std::string inner;
  Value items = manyTexts();

  OddCall(const BQString* protocol, const std::string& url) : TestCall(url, protocol) {
    setParameters(dictionary({{"items", items}, {"last", string("last value")}}));
    VXClientContext context = {0, this, nullptr, nullptr, nullptr};
    VXMethodInvocationAddSerializationOverride(get(), BQStringGetTypeID(), override, &context);
  }

  static const BQString* override(VXMethodInvocationRef, BQTypeRef value, void* info) {
    auto* odd = static_cast<OddCall*>(info);
    if (odd->act != nullptr && ++odd->acts == odd->when) odd->act(*odd);
    return odd->answer != nullptr ? odd->answer(value) : nullptr;
  }
};

void storeResult(VXMethodInvocationRef, void* info, const BQDictionary* result) {
  *static_cast<std::string*>(info) = outcomeOf(result);
  BQRelease(result);
}

void runThrice(const BQString* mode) {
  for (int i = 0; i < 3; ++i) BQRunLoopRunInMode(mode, 0, true);
}

constexpr const char* kTakenAway = "The invocation was taken out of its synchronous call 2 -65794";

const struct {
  const char* what;
  void (*act)(OddCall&);
  const char* outcome = "ok";
  const char* inner = "";
} kOddActs[] = {
    {"invokes itself", [](OddCall& odd) { odd.inner = odd.invoke(); }, "ok",
     "The invocation is being made already 2 -65794"},
    {"sets other parameters", [](OddCall& odd) { odd.setParameters(Value()); }},
    {"schedules itself", [](OddCall& odd) { odd.schedule(kSynchronous); },
     "Timed Out Waiting For Open -1 -65796"},
    {"schedules itself and runs the loop",
     [](OddCall& odd) {
       odd.schedule(kElsewhere);
       runThrice(kElsewhere);
       odd.unschedule(kElsewhere);
       odd.inner = std::to_string(odd.acts);
     },
     "Timed Out Waiting For Open -1 -65796", "1"},
    {"sets another callback",
     [](OddCall& odd) {
       VXClientContext context = {0, &odd.inner, nullptr, nullptr, nullptr};
       VXMethodInvocationSetCallBack(odd.get(), storeResult, &context);
     },
     kTakenAway, "ok"},
    {"removes the callback", [](OddCall& odd) { VXMethodInvocationSetCallBack(odd.get(), nullptr, nullptr); },
     kTakenAway},
    {"takes itself off the mode", [](OddCall& odd) { odd.unschedule(kSynchronous); }, kTakenAway},
    {"goes to a mode that does not run",
     [](OddCall& odd) { odd.unschedule(kSynchronous), odd.schedule(kElsewhere); }, kTakenAway},
    {"stops the loop, once", [](OddCall&) { BQRunLoopStop(BQRunLoopGetCurrent()); }},
    {"drops the last reference", [](OddCall& odd) { odd.release(); }},
    {"calls another that takes itself off the mode",
     [](OddCall& odd) {
       OddCall other(kVXXMLRPCProtocol, "http://127.0.0.1:1/");
       other.act = [](OddCall& self) { self.unschedule(kSynchronous); };
       odd.inner = other.invoke();
     },
     "ok", kTakenAway},
    {"runs the loop", [](OddCall&) { runThrice(kSynchronous); }},
    {"adds overrides",
     [](OddCall& odd) {
       for (int i = 0; i < 100; ++i) {
         VXMethodInvocationAddSerializationOverride(odd.get(), 1, nullptr, nullptr);
         VXMethodInvocationAddDeserializationOverride(odd.get(), BQSTR("*"), nullptr, nullptr, nullptr);
       }
     }},
    {"makes a document of itself",
     [](OddCall& odd) { BQRelease(VXMethodInvocationCopySerialization(odd.get())); }},
};

TEST(OddCallers, OverridesMayCallBackIntoTheLibrary) {
  for (const BQString* protocol : kProtocols) {
    for (const auto& row : kOddActs) {
      SCOPED_TRACE(text(protocol) + ": an override that " + row.what);
      ScriptedPeer peer({replies({anyReply(protocol), anyReply(protocol)})});
      OddCall odd(protocol, peer.url());
      odd.act = row.act;
      EXPECT_EQ(odd.invoke(), row.outcome);
      EXPECT_EQ(odd.inner, row.inner);
      EXPECT_GT(odd.acts, 0);
      EXPECT_EQ(odd.get() == nullptr ? "ok" : odd.invoke(), "ok") << "the next call";
      for (const BQString* mode : {kSynchronous, kElsewhere}) {
        EXPECT_EQ(BQRunLoopRunInMode(mode, 0, true), kBQRunLoopRunFinished);
      }
    }
  }
}

/* The containers that are being written lose what nothing else holds, at each of their strings. */
TEST(OddCallers, OverridesMayEmptyWhatIsBeingWritten) {
  for (const BQString* protocol : kProtocols) {
    ScriptedPeer peer({replies(std::vector<std::string>(19, anyReply(protocol)))});
    for (int when = 1; when <= 19; ++when) {
      OddCall odd(protocol, peer.url());
      odd.when = when;
      odd.act = [](OddCall& self) {
        auto* items = self.items.as<BQArray>();
        BQDictionaryRemoveAllValues(Value::retain(BQArrayGetValueAtIndex(items, 9)).as<BQDictionary>());
        BQArrayRemoveAllValues(items);
        self.release();
      };
      EXPECT_EQ(odd.invoke(), "ok");
      EXPECT_EQ(odd.acts, when < 10 ? when + 1 : 19)
          << "arrays are read as they are, dictionaries as they were";
    }
  }
}

TEST(OddCallers, CallsAtTheExitOfTheProcessSayWhatIsWrong) {
  const auto run = [] {
    BQRunLoopGetCurrent(); /* which is gone when the function is called */
    std::atexit([] { std::fputs(TestCall("http://127.0.0.1:1/").invoke().c_str(), stderr); });
    std::exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "The thread is ending");
}

TEST(OddCallers, OverridesMayReturnNonsenseAndBeOfNoClass) {
  using Answer = const BQString* (*)(BQTypeRef);
  const Answer answers[] = {
      [](BQTypeRef) { return static_cast<const BQString*>(integer(5).release()); },
      [](BQTypeRef) { return reinterpret_cast<const BQString*>(kBQNull); },
      [](BQTypeRef value) { return static_cast<const BQString*>(BQRetain(value)); },
      [](BQTypeRef value) { return static_cast<const BQString*>(array({Value::retain(value)}).release()); }};
  auto fail = [](VXMethodInvocationRef, BQTypeRef, void*) -> const BQString* {
    ADD_FAILURE() << "called for a value that is not there";
    return nullptr;
  };
  for (const BQString* protocol : kProtocols) {
    for (Answer answer : answers) {
      ScriptedPeer peer({replies({anyReply(protocol), anyReply(protocol)})});
      OddCall odd(protocol, peer.url());
      odd.answer = answer;
      VXMethodInvocationAddSerializationOverride(odd.get(), 0, fail, nullptr);
      EXPECT_EQ(odd.invoke(), "ok");
      EXPECT_EQ(odd.setParameters(Value(), array({string("missing")})).invoke(), "ok");
    }
  }
}

/* What is of another class than it should be counts as unset, in properties and in what is sent. */
TEST(OddCallers, PropertiesAndValuesMayBeOfAnyClass) {
  const Value values[] = {Value::retain(kBQNull),
                          Value::retain(kBQBooleanFalse),
                          real(std::nan("")),
                          integer(INT64_MAX, kBQNumberSInt64Type),
                          date(1e300),
                          blob("\xff"),
                          array({Value()}),
                          dictionary({}),
                          Value(),
                          Value::retain(BQRunLoopGetCurrent())};
  for (const BQString* protocol : kProtocols) {
    ScriptedPeer peer({replies(std::vector<std::string>(1000, anyReply(protocol)))});
    for (const Value& value : values) {
      for (const auto& [key, name] : kConstants) {
        TestCall call(peer.url(), protocol);
        EXPECT_EQ(call.set(key, value.get()).invoke(), "ok") << name << " " << text(value.get());
      }
      Value members = dictionary({});
      for (BQTypeRef key : {value.get(), BQTypeRef{kVXRecordParameterOrder}, BQTypeRef{kVXRecordNamespaceURI},
                            BQTypeRef{kVXRecordType}}) {
        BQDictionarySetValue(members.as<BQDictionary>(), key, value.get());
      }
      EXPECT_EQ(TestCall(peer.url(), protocol).setParameters(members).invoke(), "ok") << text(value.get());
    }
  }
}

/* A context that, when it is dropped, sets the callback again. */
struct Rebound {
  VXMethodInvocationRef invocation;
  int times = 0, held = 0;

  static void* retain(void* info) {
    ++static_cast<Rebound*>(info)->held;
    return info;
  }
  static void release(void* info) {
    auto* self = static_cast<Rebound*>(info);
    --self->held;
    if (self->times++ < 3) self->set();
  }
  void set() {
    VXClientContext context = {0, this, retain, release, nullptr};
    VXMethodInvocationSetCallBack(invocation, nullptr, &context);
  }
};

TEST(OddCallers, ContextsThatSetTheCallbackAgainAreNotLost) {
  TestCall call("http://127.0.0.1/");
  Rebound rebound{call.get()};
  rebound.set();
  VXMethodInvocationSetCallBack(call.get(), nullptr, nullptr);
  EXPECT_GT(rebound.times, 1);
  rebound.times = 3;
  VXMethodInvocationSetCallBack(call.get(), nullptr, nullptr);
  EXPECT_EQ(rebound.held, 0);
}

TEST(OddCallers, ContextsMayHoldTheirInvocation) {
  ScriptedPeer peer({reply(kOK)});
  TestCall call(peer.url());
  VXMethodInvocationRef invocation = call.get();
  VXClientContext context = {0, invocation, [](void* info) { return const_cast<void*>(BQRetain(info)); },
                             [](void* info) { BQRelease(info); }, nullptr};
  VXMethodInvocationSetCallBack(invocation, nullptr, &context);
  call.release();
  EXPECT_EQ(outcomeOf(Value::adopt(VXMethodInvocationInvoke(invocation))), "ok");
}

}  // namespace
}  // namespace vx
