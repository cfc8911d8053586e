/* What a transaction sends, captures and prints, and its states. */
#include "transport/HTTPClosureSource.h"

#include "Call.h"
#include "api/MethodInvocationHandle.h"
#include "diag/Switches.h"

namespace vx {
namespace {

TEST(Transaction, FailsBeforeAnythingIsSent) {
  const std::string nowhere = "http://127.0.0.1:1/";
  const struct {
    std::string url;
    const BQString* key;
    Value value;
    const char* expected;
  } rows[] = {
      {"http:///path", nullptr, Value(), "Missing host in URL 2 -65794"},
      {"ftp://127.0.0.1:1/", nullptr, Value(), "Can't issue read stream open 2 -65794"},
      {nowhere, kVXPostingMethod, string("NO TOKEN"), "Can't create HTTP message request 2 -65794"},
      {nowhere, kVXHTTPVersion, string("HTTP/9"), "Can't create HTTP message request 2 -65794"},
      {nowhere, kVXHTTPExtraHeaders, dictionary({{"X-Extra", string("a\r\nInjected: b")}}),
       "Can't create HTTP message request 2 -65794"},
      {nowhere, kVXHTTPMessage, Value::adopt(BQHTTPMessageCreateResponse(BQSTR("HTTP/1.1 200 OK"))),
       "Can't create read stream from http message 2 -65794"},
  };
  for (const auto& row : rows) {
    TestCall call(row.url);
    if (row.key != nullptr) call.set(row.key, row.value.get());
    EXPECT_EQ(call.invoke(), row.expected) << row.url;
  }
  /* Lives for the process: what refers to itself is never freed. */
  static BQArray* const itself = BQArrayCreateMutable(1);
  BQArrayAppendValue(itself, itself);
  TestCall endless(nowhere), nameless(nowhere, kVXXMLRPCProtocol, nullptr);
  endless.setParameters(dictionary({{"self", Value::retain(itself)}}));
  for (TestCall* call : {&endless, &nameless}) EXPECT_EQ(call->invoke(), "Can't serialize request 2 -65794");
}

TEST(Transaction, SendsItsHeadersAndNoOthers) {
  ScriptedPeer peer({replies({kOK, kOK, kOK})});
  Value message =
      Value::adopt(BQHTTPMessageCreateRequest(BQSTR("PATCH"), url(peer.url("/template")), kBQHTTPVersion1_1));
  for (const BQString* name : {BQSTR("user-agent"), BQSTR("X-Template")})
    BQHTTPMessageSetHeaderFieldValue(message.as<BQHTTPMessage>(), name, BQSTR("mine"));
  const std::string hostAndAgent =
      "Host: 127.0.0.1\r\nUser-Agent: Harlon; Orvane.framework (1.0.0)\r\nContent-Type: ";
  const std::pair<std::vector<std::pair<const BQString*, Value>>, std::string> rows[] = {
      {{}, "POST /RPC2?a=b HTTP/1.1\r\n" + hostAndAgent + "text/xml\r\n"},
      {{{kVXHTTPVersion, Value::retain(kBQHTTPVersion1_0)},
        {kVXPostingMethod, string("PUT")},
        {kVXHTTPExtraHeaders,
         dictionary({{"Content-Type", string("application/xml")}, {"SOAPAction", string("\"urn:a\"")}})}},
       "PUT /RPC2?a=b HTTP/1.0\r\n" + hostAndAgent + "application/xml\r\nSOAPAction: \"urn:a\"\r\n"},
      {{{kVXHTTPMessage, message}, {kVXPostingMethod, string("PUT")}},
       "PATCH /template HTTP/1.1\r\nHost: 127.0.0.1\r\nuser-agent: mine\r\nX-Template: mine\r\n"
       "Content-Type: text/xml\r\n"}};
  for (const auto& [properties, head] : rows) {
    TestCall call(peer.url("/RPC2?a=b"));
    for (const auto& [key, value] : properties) call.set(key, value.get());
    EXPECT_EQ(call.invoke(), "ok");
    const std::string request = peer.requests().back();
    EXPECT_EQ(request.substr(0, request.find("<")), head + "Content-Length: 115\r\n\r\n");
    EXPECT_TRUE(request.ends_with("</methodCall>\r\n"));
  }
  EXPECT_EQ(BQHTTPMessageCopyBody(message), nullptr) << "the template itself is not changed";
}

TEST(Transaction, CapturesWhatWasAskedForWhenTheSourceIsMade) {
  const std::pair<const BQString*, const char*> rows[] = {
      {kVXDebugOutgoingHeaders, "\"Content-Type\": \"text/xml\""},
      {kVXDebugOutgoingBody, "<methodName>test.method</methodName>"},
      {kVXDebugIncomingHeaders, "\"Content-Length\""},
      {kVXDebugIncomingBody, "<string>ok</string>"}};
  for (const auto& [key, part] : rows) {
    ScriptedPeer peer({replies({kOK, kOK})});
    TestCall call(peer.url());
    call.unschedule();
    call.set(key, kBQBooleanTrue);
    EXPECT_EQ(BQDictionaryGetCount(call.result()), 2) << "the source was made before";
    Value result = call.result();
    EXPECT_NE(text(BQDictionaryGetValue(result, key)).find(part), std::string::npos);
    EXPECT_EQ(BQDictionaryGetCount(result), 3) << "result, response message and the one capture";
  }
}

TEST(Transaction, SwitchesPrintTheTransactionAndItsSteps) {
  for (int verbose : {0, 1}) {
    ScriptedPeer peer({reply(kOK)});
    TestCall call(peer.url()); /* which may be what reads the environment */
    gVXDebug = 1;
    gVXDebugVerbose = verbose;
    testing::internal::CaptureStderr();
    EXPECT_EQ(BQDictionaryGetCount(call.result()), 6) << "all four captures";
    gVXDebug = gVXDebugVerbose = 0;
    const std::string printed = testing::internal::GetCapturedStderr();
    for (const char* step :
         {"HTTPClosureSource::perform state 0 (uninit)\n",
          "HTTPClosureSource::perform new state state 1 (waitforopen)\n",
          "readStreamCallback type 2 (kBQStreamEventHasBytesAvailable), state waitforopen\n\n",
          "HTTPClosureSource::perform state 2 (readintobuffer)\n",
          "type 16 (kBQStreamEventEndEncountered), state readintobuffer\n\n",
          "HTTPClosureSource::perform state 3 (streamendencountered)\n"}) {
      EXPECT_EQ(printed.find(step) != std::string::npos, verbose != 0) << step << printed;
    }
    for (const char* part : {"Transaction Log:Outgoing Headers: {\"User-Agent\": ", "\nOutgoing Body: <?xml",
                             "\nIncoming Headers: {", "\nIncoming Body: <?xml", "</methodResponse>\n\n"}) {
      EXPECT_NE(printed.find(part), std::string::npos) << part;
    }
    bool isWhole = printed.starts_with("Transaction Log:") && printed.ends_with("</methodResponse>\n\n");
    EXPECT_EQ(isWhole, verbose == 0) << printed;
  }
}

TEST(Machine, StatesAndStimuliGiveTheNextStateAndTheOutcome) {
  enum Stimulus {
    kPerform = -1,
    kTimer = -2,
    kBase = -3 /* performs as a source without a transport */,
    kOpen = 1,
    kBytes = 2,
    kOther = 4,
    kEnd = 16
  };
  const struct {
    Stimulus stimulus;
    /* The next state for each of the states 0 to 5; -1 where the row leaves it out. */
    int32_t next[6];
    std::vector<std::string> outcomes;
  } rows[] = {
      {kTimer, {4, 4, 4, 3, 4, -1}, {}},
      {kBase, {0, 1, 2, 3, 4, 5}, {"ClosureSource::perform not overridden 2 -65794"}},
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
      Scheduled call("http://127.0.0.1:1/");
      auto* source = static_cast<HTTPClosureSource*>(call.get()->wrapped->getSourceForCall());
      source->getSourceCreatingIfNecessary();
      source->setState(state);
      for (int times = 0; times < 2; ++times) { /* a call ends once */
        if (row.stimulus == kPerform) source->perform();
        if (row.stimulus == kTimer) source->timedOut();
        if (row.stimulus == kBase) source->ClosureSource::perform();
        if (row.stimulus > 0) source->readStreamCallback(static_cast<BQStreamEventType>(row.stimulus));
      }
      EXPECT_EQ(source->getState(), row.next[state]);
      EXPECT_EQ(call.outcomes, row.outcomes);
      source->readStreamCallback(kBQStreamEventHasBytesAvailable);
      EXPECT_EQ(source->getState(), row.outcomes.empty() ? 2 : row.next[state]) << "events after the end";
    }
  }
}

TEST(Transaction, CallThatHasEndedHoldsNoConnectionAndIsNotSent) {
  ScriptedPeer peer({Script().expectRequest().waitForClose(), reply(kOK)});
  TestCall held(peer.url()), waiting(peer.url()), next(peer.url());
  for (TestCall* call : {&held, &waiting, &next}) call->set(kVXHTTPConnectionLimit, 1);
  for (TestCall* call : {&held, &waiting}) call->schedule();
  while (peer.requests().empty()) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0.01, true);
  for (TestCall* call : {&waiting, &held}) {
    auto* source = static_cast<HTTPClosureSource*>(call->get()->wrapped->getSource());
    source->readStreamCallback(kBQStreamEventCanAcceptBytes);
  }
  EXPECT_EQ(next.invoke(), "ok");
  EXPECT_EQ(peer.requests().size(), 2u);
}

}  // namespace
}  // namespace vx
