/* Callers whose functions call back into the library, or whose values are not what they should be. */
#include <cmath>
#include <cstdlib>

#include "Call.h"

namespace vx {
namespace {

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

/* A call whose string parameters are handed to an override that does something odd, once. */
struct OddCall {
  TestCall call;
  void (*act)(OddCall&) = nullptr;
  const BQString* (*answer)(BQTypeRef) = nullptr;
  int acts = 0;
  std::string inner;

  OddCall(const BQString* protocol, const std::string& url) : call(url, protocol) {
    call.setParameters(dictionary({{"items", manyTexts()}, {"last", string("last value")}}));
    VXClientContext context = {0, this, nullptr, nullptr, nullptr};
    VXMethodInvocationAddSerializationOverride(call.get(), BQStringGetTypeID(), override, &context);
  }

  static const BQString* override(VXMethodInvocationRef, BQTypeRef value, void* info) {
    auto* odd = static_cast<OddCall*>(info);
    if (odd->act != nullptr && odd->acts++ == 0) odd->act(*odd);
    return odd->answer != nullptr ? odd->answer(value) : nullptr;
  }

  void schedule(const BQString* mode) {
    VXMethodInvocationScheduleWithRunLoop(call.get(), BQRunLoopGetCurrent(), mode);
  }
  void takeOff(const BQString* mode = BQSTR("VXSYNC")) {
    VXMethodInvocationUnscheduleFromRunLoop(call.get(), BQRunLoopGetCurrent(), mode);
  }
  std::string invoke() { return outcomeOf(call.invoke()); }
};

void storeResult(VXMethodInvocationRef, void* info, const BQDictionary* result) {
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
    {"invokes itself", [](OddCall& odd) { odd.inner = odd.invoke(); }, "ok",
     "The invocation is being made already 2 -65794"},
    {"sets other parameters", [](OddCall& odd) { odd.call.setParameters(Value()); }, "ok", ""},
    {"schedules itself", [](OddCall& odd) { odd.schedule(BQSTR("VXSYNC")); },
     "Timed Out Waiting For Open -1 -65796", ""},
    {"schedules itself and runs the loop",
     [](OddCall& odd) {
       odd.schedule(BQSTR("elsewhere"));
       for (int i = 0; i < 3; ++i) BQRunLoopRunInMode(BQSTR("elsewhere"), 0, true);
       odd.takeOff(BQSTR("elsewhere"));
       odd.inner = std::to_string(odd.acts);
     },
     "Timed Out Waiting For Open -1 -65796", "1"},
    {"sets another callback",
     [](OddCall& odd) {
       VXClientContext context = {0, &odd.inner, nullptr, nullptr, nullptr};
       VXMethodInvocationSetCallBack(odd.call.get(), storeResult, &context);
     },
     kTakenAway, "ok"},
    {"removes the callback",
     [](OddCall& odd) { VXMethodInvocationSetCallBack(odd.call.get(), nullptr, nullptr); }, kTakenAway, ""},
    {"takes itself off the mode", [](OddCall& odd) { odd.takeOff(); }, kTakenAway, ""},
    {"goes to a mode that does not run",
     [](OddCall& odd) {
       odd.takeOff();
       odd.schedule(BQSTR("elsewhere"));
     },
     kTakenAway, ""},
    {"stops the loop, once", [](OddCall&) { BQRunLoopStop(BQRunLoopGetCurrent()); }, "ok", ""},
    {"drops the last reference", [](OddCall& odd) { odd.call.release(); }, "ok", ""},
    {"calls another",
     [](OddCall& odd) {
       TestCall other("http://127.0.0.1:" + std::to_string(closedPort()) + "/");
       odd.inner = outcomeOf(other.invoke());
     },
     "ok", "Stream Error 1 111"},
    {"calls another that takes itself off the mode",
     [](OddCall& odd) {
       OddCall other(kVXXMLRPCProtocol, "http://127.0.0.1:1/");
       other.act = [](OddCall& self) { self.takeOff(); };
       odd.inner = other.invoke();
     },
     "ok", kTakenAway},
    {"runs the loop",
     [](OddCall&) {
       for (int i = 0; i < 3; ++i) BQRunLoopRunInMode(BQSTR("VXSYNC"), 0, true);
     },
     "ok", ""},
    {"adds overrides",
     [](OddCall& odd) {
       for (int i = 0; i < 100; ++i) {
         VXMethodInvocationAddSerializationOverride(odd.call.get(), 1, nullptr, nullptr);
         VXMethodInvocationAddDeserializationOverride(odd.call.get(), BQSTR("*"), nullptr, nullptr, nullptr);
       }
     },
     "ok", ""},
    {"makes a document of itself",
     [](OddCall& odd) { BQRelease(VXMethodInvocationCopySerialization(odd.call.get())); }, "ok", ""},
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
      EXPECT_EQ(odd.call.get() == nullptr ? "ok" : odd.invoke(), "ok") << "the next call";
      for (const BQString* mode : {BQSTR("VXSYNC"), BQSTR("elsewhere")}) {
        EXPECT_EQ(BQRunLoopRunInMode(mode, 0, true), kBQRunLoopRunFinished);
      }
    }
  }
}

/* The containers that are being written lose what they hold, which nothing else holds; the handler is
 * released. */
TEST(OddCallers, OverridesMayEmptyWhatIsBeingWritten) {
  struct Writing {
    Value items = manyTexts();
    Value handler;
    int left;
  };
  auto empty = [](VXMethodInvocationRef, BQTypeRef, void* info) -> const BQString* {
    auto* writing = static_cast<Writing*>(info);
    if (--writing->left != 0) return nullptr;
    auto* items = writing->items.as<BQArray>();
    BQDictionaryRemoveAllValues(Value::retain(BQArrayGetValueAtIndex(items, 9)).as<BQDictionary>());
    BQArrayRemoveAllValues(items);
    writing->handler = Value();
    return nullptr;
  };
  for (const BQString* protocol : kProtocols) {
    for (int when = 1; when <= 19; ++when) {
      Writing writing{.handler = Value::adopt(VXProtocolHandlerCreate(nullptr, protocol)), .left = when};
      VXClientContext context = {0, &writing, nullptr, nullptr, nullptr};
      auto* handler = writing.handler.as<OpaqueVXProtocolHandlerRef>();
      VXProtocolHandlerSetSerializationOverride(handler, BQStringGetTypeID(), empty, &context);
      Value document = Value::adopt(VXProtocolHandlerCopyRequestDocument(
          handler, BQSTR("m"), dictionary({{"p", writing.items}}), array({string("p")}), nullptr));
      EXPECT_NE(document.get(), nullptr);
      EXPECT_LE(writing.left, when == 19 ? 1 : 0);
    }
  }
}

TEST(OddCallers, CallsAtTheExitOfTheProcessSayWhatIsWrong) {
  const auto run = [] {
    BQRunLoopGetCurrent(); /* which is gone when the function is called */
    std::atexit([] { std::fputs(outcomeOf(TestCall("http://127.0.0.1:1/").invoke()).c_str(), stderr); });
    std::exit(0);
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(0), "The thread is ending");
}

TEST(OddCallers, OverridesMayReturnNonsense) {
  const std::pair<const char*, const BQString* (*)(BQTypeRef)> answers[] = {
      {"a number", [](BQTypeRef) { return static_cast<const BQString*>(integer(5).release()); }},
      {"the null object", [](BQTypeRef) { return reinterpret_cast<const BQString*>(kBQNull); }},
      {"the value itself", [](BQTypeRef value) { return static_cast<const BQString*>(BQRetain(value)); }},
      {"an array that holds it",
       [](BQTypeRef value) { return static_cast<const BQString*>(array({Value::retain(value)}).release()); }},
  };
  for (const BQString* protocol : kProtocols) {
    for (const auto& [what, answer] : answers) {
      SCOPED_TRACE(what);
      ScriptedPeer peer({reply(anyReply(protocol))});
      OddCall odd(protocol, peer.url());
      odd.answer = answer;
      EXPECT_EQ(odd.invoke(), "ok");
    }
  }
}

TEST(OddCallers, OverridesOfNoClassAreNotCalled) {
  auto fail = [](VXMethodInvocationRef, BQTypeRef, void*) -> const BQString* {
    ADD_FAILURE() << "called for a value that is not there";
    return nullptr;
  };
  for (const BQString* protocol : kProtocols) {
    ScriptedPeer peer({replies({anyReply(protocol), anyReply(protocol)})});
    TestCall call(peer.url(), protocol);
    VXMethodInvocationAddSerializationOverride(call.get(), 0, fail, nullptr);
    for (const Value& parameters : {dictionary({{"a", Value::retain(kBQNull)}}), Value()}) {
      call.setParameters(parameters, array({string("a")}));
      EXPECT_EQ(outcomeOf(call.invoke()), "ok");
    }
  }
}

/* Any key may hold any value: what is of another kind than it should be counts as unset. */
TEST(OddCallers, PropertiesMayBeOfAnyKind) {
  const Value values[] = {Value::retain(kBQNull),
                          Value::retain(kBQBooleanFalse),
                          real(std::nan("")),
                          integer(INT64_MAX, kBQNumberSInt64Type),
                          date(1e300),
                          blob(std::string_view("\0\xff", 2)),
                          array({Value()}),
                          dictionary({}),
                          Value(),
                          Value::retain(BQRunLoopGetCurrent())};
  for (const BQString* protocol : kProtocols) {
    std::vector<std::string> answers(std::size(kConstants) * std::size(values), anyReply(protocol));
    ScriptedPeer peer({replies(answers)});
    for (const auto& [key, name] : kConstants) {
      for (const Value& value : values) {
        TestCall call(peer.url(), protocol);
        call.set(key, value.get());
        EXPECT_EQ(outcomeOf(call.invoke()), "ok") << name << " " << text(value.get());
      }
    }
  }
}

/* What structures, parameters and their orders hold may be anything, themselves included. */
TEST(OddCallers, ValuesMayBeOfAnyKind) {
  for (const BQString* protocol : kProtocols) {
    Value members = dictionary({}), number = integer(7);
    const BQTypeRef odds[] = {number.get(), kBQNull, kBQBooleanTrue, BQRunLoopGetCurrent()};
    for (BQTypeRef odd : odds) {
      for (BQTypeRef key : {odd, BQTypeRef{kVXRecordParameterOrder}, BQTypeRef{kVXRecordNamespaceURI},
                            BQTypeRef{kVXRecordType}}) {
        BQDictionarySetValue(members.as<BQDictionary>(), key, odd);
      }
      ScriptedPeer peer({reply(anyReply(protocol))});
      EXPECT_EQ(outcomeOf(TestCall(peer.url(), protocol).setParameters(members).invoke()), "ok") << text(odd);
    }
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
