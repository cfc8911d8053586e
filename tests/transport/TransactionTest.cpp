#include "transport/HTTPClosureSource.h"

#include <algorithm>

#include "Call.h"
#include "api/MethodInvocationHandle.h"
#include "diag/Switches.h"

namespace vx {
namespace {

/* Lives for the process: what refers to itself is never freed. */
const BQArray* arrayThatHoldsItself() {
  static BQArray* const array = BQArrayCreateMutable(2);
  while (BQArrayGetCount(array) < 2) BQArrayAppendValue(array, array);
  return array;
}

TEST(Transaction, FailsBeforeAnythingIsSent) {
  const char* const nowhere = "http://127.0.0.1:1/";
  const struct {
    const char* url;
    void (*configure)(TestCall&);
    const char* expected;
  } rows[] = {
      {"http:///path", nullptr, "Missing host in URL 2 -65794"},
      {"mailto:somebody", nullptr, "Missing host in URL 2 -65794"},
      {"ftp://127.0.0.1:1/", nullptr, "Can't issue read stream open 2 -65794"},
      {nowhere, [](TestCall& call) { call.set(kVXPostingMethod, BQSTR("NO TOKEN")); },
       "Can't create HTTP message request 2 -65794"},
      {nowhere, [](TestCall& call) { call.set(kVXHTTPVersion, BQSTR("HTTP/9")); },
       "Can't create HTTP message request 2 -65794"},
      {nowhere,
       [](TestCall& call) {
         call.set(kVXHTTPExtraHeaders, dictionary({{"X-Extra", string("a\r\nInjected: b")}}).get());
       },
       "Can't create HTTP message request 2 -65794"},
      {nowhere,
       [](TestCall& call) {
         call.set(kVXHTTPMessage, Value::adopt(BQHTTPMessageCreateResponse(BQSTR("HTTP/1.1 200 OK"))).get());
       },
       "Can't create read stream from http message 2 -65794"},
      {nowhere,
       [](TestCall& call) {
         call.setParameters(dictionary({{"self", Value::retain(arrayThatHoldsItself())}}));
       },
       "Can't serialize request 2 -65794"},
  };
  for (const auto& row : rows) {
    TestCall call(row.url);
    if (row.configure != nullptr) row.configure(call);
    EXPECT_EQ(failureOf(call.invoke()), row.expected) << row.url;
  }
  EXPECT_EQ(failureOf(TestCall(nowhere, kVXXMLRPCProtocol, nullptr).invoke()),
            "Can't serialize request 2 -65794");
}

/* The header lines of a request, without the one that tells the length. */
std::vector<std::string> headersOf(const std::string& request) {
  std::vector<std::string> lines;
  for (size_t start = 0, end; (end = request.find("\r\n", start)) != start; start = end + 2) {
    std::string line = request.substr(start, end - start);
    if (line.rfind("Content-Length: ", 0) != 0) lines.push_back(line);
  }
  std::sort(lines.begin() + 1, lines.end());
  return lines;
}

std::vector<std::string> requestHeaders(void (*configure)(TestCall&)) {
  ScriptedPeer peer({reply(kOK)});
  TestCall call(peer.url("/RPC2?a=b"));
  configure(call);
  EXPECT_EQ(valueOf(call.invoke()), "ok");
  EXPECT_TRUE(peer.requests().at(0).ends_with("</methodCall>\r\n"));
  return headersOf(peer.requests().at(0));
}

TEST(Transaction, SendsItsHeadersAndNoOthers) {
  const std::string agent = "User-Agent: Harlon; Orvane.framework (1.0.0)";
  using Lines = std::vector<std::string>;
  EXPECT_EQ(requestHeaders([](TestCall&) {}),
            (Lines{"POST /RPC2?a=b HTTP/1.1", "Content-Type: text/xml", "Host: 127.0.0.1", agent}));
  EXPECT_EQ(requestHeaders([](TestCall& call) {
              call.set(kVXHTTPVersion, kBQHTTPVersion1_0).set(kVXPostingMethod, BQSTR("PUT"));
            }),
            (Lines{"PUT /RPC2?a=b HTTP/1.0", "Content-Type: text/xml", "Host: 127.0.0.1", agent}));
  EXPECT_EQ(requestHeaders([](TestCall& call) {
              call.set(kVXHTTPExtraHeaders, dictionary({{"Content-Type", string("application/xml")},
                                                        {"SOAPAction", string("\"urn:a\"")}})
                                                .get());
            }),
            (Lines{"POST /RPC2?a=b HTTP/1.1", "Content-Type: application/xml", "Host: 127.0.0.1",
                   "SOAPAction: \"urn:a\"", agent}));
}

TEST(Transaction, HostOfAnIPv6AddressIsInBrackets) {
  ScriptedPeer peer({reply(kOK)}, true);
  if (!peer.isListening()) GTEST_SKIP() << "the machine has no IPv6";
  EXPECT_EQ(valueOf(TestCall(peer.url()).invoke()), "ok");
  EXPECT_NE(peer.requests().at(0).find("\r\nHost: [::1]\r\n"), std::string::npos);
}

TEST(Transaction, TemplateGivesMethodURLAndHeaders) {
  ScriptedPeer peer({reply(kOK)});
  Value held =
      Value::adopt(BQHTTPMessageCreateRequest(BQSTR("PATCH"), url(peer.url("/template")), kBQHTTPVersion1_1));
  auto* message = held.as<BQHTTPMessage>();
  BQHTTPMessageSetHeaderFieldValue(message, BQSTR("user-agent"), BQSTR("mine"));
  BQHTTPMessageSetHeaderFieldValue(message, BQSTR("X-Template"), BQSTR("kept"));
  TestCall call("http://127.0.0.1/elsewhere");
  call.set(kVXHTTPMessage, message).set(kVXPostingMethod, BQSTR("PUT"));
  EXPECT_EQ(valueOf(call.invoke()), "ok");
  EXPECT_EQ(headersOf(peer.requests().at(0)),
            (std::vector<std::string>{"PATCH /template HTTP/1.1", "Content-Type: text/xml", "Host: 127.0.0.1",
                                      "X-Template: kept", "user-agent: mine"}));
  EXPECT_EQ(BQHTTPMessageCopyBody(message), nullptr) << "the template itself is not changed";
}

TEST(Transaction, CapturesWhatWasAskedFor) {
  const std::pair<const BQString*, const char*> rows[] = {
      {kVXDebugOutgoingHeaders, "\"Content-Type\": \"text/xml\""},
      {kVXDebugOutgoingBody, "<methodName>test.method</methodName>"},
      {kVXDebugIncomingHeaders, "\"Content-Length\""},
      {kVXDebugIncomingBody, "<string>ok</string>"}};
  for (const auto& [key, part] : rows) {
    ScriptedPeer peer({reply(kOK)});
    Value result = TestCall(peer.url()).set(key, kBQBooleanTrue).invoke();
    EXPECT_NE(text(BQDictionaryGetValue(result, key)).find(part), std::string::npos);
    EXPECT_EQ(BQDictionaryGetCount(result), 3) << "result, response message and the one capture";
  }
}

TEST(Transaction, CapturesAreChosenWhenTheSourceOfACallIsMade) {
  ScriptedPeer peer({replies({kOK, kOK})});
  TestCall call(peer.url());
  VXMethodInvocationUnscheduleFromRunLoop(call.get(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  call.set(kVXDebugIncomingBody, kBQBooleanTrue);
  EXPECT_EQ(BQDictionaryGetValue(call.invoke(), kVXDebugIncomingBody), nullptr);
  EXPECT_NE(BQDictionaryGetValue(call.invoke(), kVXDebugIncomingBody), nullptr);
}

/* What a call writes to the standard error stream with the switches set so. */
std::string printedBy(TestCall& call, int verbose, Value* result = nullptr) {
  gVXDebug = 1;
  gVXDebugVerbose = verbose;
  testing::internal::CaptureStderr();
  Value ignored;
  (result == nullptr ? ignored : *result) = call.invoke();
  gVXDebug = gVXDebugVerbose = 0;
  return testing::internal::GetCapturedStderr();
}

TEST(Transaction, DebugSwitchPrintsTheTransaction) {
  ScriptedPeer peer({reply(kOK)});
  TestCall call(peer.url());
  Value result;
  std::string printed = printedBy(call, 0, &result);
  EXPECT_EQ(printed.rfind("Transaction Log:Outgoing Headers: {\"User-Agent\": ", 0), 0u) << printed;
  for (const char* part : {"\nOutgoing Body: <?xml", "\nIncoming Headers: {", "\nIncoming Body: <?xml"}) {
    EXPECT_NE(printed.find(part), std::string::npos) << part;
  }
  EXPECT_TRUE(printed.ends_with("</methodResponse>\n\n"));
  EXPECT_EQ(BQDictionaryGetCount(result), 6) << "all four captures";
}

TEST(Transaction, LogsItsStepsWhenVerbose) {
  ScriptedPeer peer({reply(kOK)});
  TestCall call(peer.url());
  std::string printed = printedBy(call, 1);
  for (const char* line :
       {"HTTPClosureSource::perform state 0 (uninit)\n",
        "HTTPClosureSource::perform new state state 1 (waitforopen)\n",
        "HTTPClosureSource::readStreamCallback type 2 (kBQStreamEventHasBytesAvailable), state "
        "waitforopen\n\n",
        "HTTPClosureSource::perform state 2 (readintobuffer)\n",
        "type 16 (kBQStreamEventEndEncountered), state readintobuffer\n\n",
        "HTTPClosureSource::perform state 3 (streamendencountered)\n"}) {
    EXPECT_NE(printed.find(line), std::string::npos) << line << printed;
  }
}

/* Is stepped by hand through what a peer cannot cause. */
class Machine : public Scheduled {
 public:
  Machine() : Scheduled("http://127.0.0.1:1/") {
    source = static_cast<HTTPClosureSource*>(call.get()->wrapped->getSourceForCall());
    source->getSourceCreatingIfNecessary();
  }

  HTTPClosureSource* source;
};

TEST(Machine, StatesAndStimuliGiveTheNextStateAndTheOutcome) {
  enum Stimulus { kPerform = -1, kTimer = -2, kOpen = 1, kBytes = 2, kOther = 4, kEnd = 16 };
  const struct {
    Stimulus stimulus;
    /* The next state for each of the states 0 to 5; -1 where the row leaves it out. */
    int32_t next[6];
    std::vector<std::string> outcomes;
  } rows[] = {
      {kTimer, {4, 4, 4, 3, 4, -1}, {}},
      {kOpen, {0, 1, 2, 3, 4, 5}, {}},
      {kBytes, {2, 2, 2, 2, 2, 2}, {}},
      {kEnd, {3, 3, 3, 3, 3, 3}, {}},
      {kOther, {0, 1, 2, 3, 4, 5}, {"Unlikely state for a read stream 2 -65794"}},
      {kPerform, {-1, 1, -1, -1, -1, -1}, {"Timed Out Waiting For Open -1 -65796"}},
      {kPerform, {-1, -1, -1, 3, -1, -1}, {"Could not read any data 2 -65794"}},
      {kPerform, {-1, -1, -1, -1, 4, -1}, {"Timed Out -1 -65796"}},
      {kPerform, {-1, -1, -1, -1, -1, 5}, {"Uknown State 2 -65794"}},
  };
  for (const auto& row : rows) {
    for (int32_t state = 0; state < 6; ++state) {
      if (row.next[state] < 0) continue;
      SCOPED_TRACE("state " + std::to_string(state) + ", stimulus " + std::to_string(row.stimulus));
      Machine machine;
      machine.source->setState(state);
      for (int times = 0; times < 2; ++times) { /* a call ends once */
        if (row.stimulus == kPerform) machine.source->perform();
        if (row.stimulus == kTimer) machine.source->timedOut();
        if (row.stimulus > 0)
          machine.source->readStreamCallback(static_cast<BQStreamEventType>(row.stimulus));
      }
      EXPECT_EQ(machine.source->getState(), row.next[state]);
      EXPECT_EQ(machine.outcomes, row.outcomes);
      machine.source->readStreamCallback(kBQStreamEventHasBytesAvailable);
      EXPECT_EQ(machine.source->getState(), row.outcomes.empty() ? 2 : row.next[state])
          << "events after the end";
    }
  }
}

TEST(Transaction, CallThatHasEndedHoldsNoConnectionAndIsNotSent) {
  ScriptedPeer peer({Script().expectRequest().waitForClose(), reply(kOK)});
  TestCall held(peer.url()), waiting(peer.url()), next(peer.url());
  for (TestCall* call : {&held, &waiting, &next}) call->set(kVXHTTPConnectionLimit, 1);
  for (TestCall* call : {&held, &waiting}) {
    VXMethodInvocationScheduleWithRunLoop(call->get(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  }
  while (peer.requests().empty()) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0.01, true);
  for (TestCall* call : {&waiting, &held}) {
    auto* source = static_cast<HTTPClosureSource*>(call->get()->wrapped->getSource());
    source->readStreamCallback(kBQStreamEventCanAcceptBytes);
  }
  EXPECT_EQ(valueOf(next.invoke()), "ok");
  EXPECT_EQ(peer.requests().size(), 2u);
}

}  // namespace
}  // namespace vx
