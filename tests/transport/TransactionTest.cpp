#include "transport/HTTPClosureSource.h"

#include <algorithm>

#include "Call.h"
#include "api/MethodInvocationHandle.h"
#include "diag/Switches.h"

namespace vx {
namespace {

std::string response(const std::string& head, const std::string& body) {
  return head + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string callOnce(const Script& script, void (*configure)(TestCall&) = nullptr) {
  ScriptedPeer peer({script});
  TestCall call(peer.url("/RPC2"));
  if (configure != nullptr) configure(call);
  return valueOf(call.invoke());
}

constexpr const char* kNoXML = "No valid XML data in response -1 -65795";
constexpr const char* kNotText = "The server did not return a 'text/xml' response. -1 -65795";

TEST(Transaction, JudgesRepliesByStatusAndType) {
  const std::string body = replyBody("fine");
  const std::string bare = body.substr(body.find("<methodResponse"));
  const std::string latin =
      "<methodResponse><params><param><value>\xE9</value></param></params></methodResponse>";
  struct Row {
    std::string head, body, expected, why;
  };
  const Row rows[] = {
      {"HTTP/1.1 200 OK\r\nContent-Type: text/xml", body, "fine", "the usual reply"},
      {"HTTP/1.1 202 Accepted\r\nContent-Type: application/xml", body, "fine", "any success, any XML"},
      {"HTTP/1.1 200 OK", body, "fine", "without a type"},
      {"HTTP/1.1 200 OK", bare, kNoXML, "without a type a declaration is needed"},
      {"HTTP/1.1 200 OK\r\nContent-Type: text/plain", bare, kNoXML, "so it is for plain text"},
      {"HTTP/1.1 200 OK\r\nContent-Type: text/xml", bare, "fine", "but not for XML"},
      {"HTTP/1.1 200 OK\r\nContent-Type: text/xml; charset=\"ISO-8859-1\"", latin, "é",
       "read as the charset says"},
      {"HTTP/1.1 200 OK\r\nContent-Type: image/png", body, kNotText, "no XML"},
      {"HTTP/1.1 500 Oops\r\nContent-Type: text/xml", body, "fine", "an error with a document is read"},
      {"HTTP/1.1 500 Oops\r\nContent-Type: image/png", body, "HTTP/1.1 500 Oops -1 -65795", "others are not"},
      {"HTTP/1.1 500 Oops\r\nContent-Type: text/html", "<html></html>", kNoXML, "HTML is taken for text"},
      {"HTTP/1.1 503 Busy\r\nContent-Type: text/xml", body, "HTTP/1.1 503 Busy -1 -65795", "only 500 counts"},
      {"HTTP/1.0 404 Not Found", "", "HTTP/1.0 404 Not Found -1 -65795", "the status line as it was sent"},
      {"HTTP/1.1 304", "", "HTTP/1.1 304 -1 -65795", "a status line without a reason"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(callOnce(reply(response(row.head, row.body))), row.expected) << row.why;
  }
  std::string empty = callOnce(reply(response("HTTP/1.1 200 OK\r\nContent-Type: text/xml", "")));
  EXPECT_TRUE(empty.ends_with(") -1 -65795")) << empty;
}

TEST(Transaction, ReportsWhatIsWrongWithADocument) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(callOnce(reply(okResponse("<?xml version=\"1.0\"?><other/>"))),
            "Can't find a 'methodResponse' element -1 -65795");
  std::string broken = callOnce(reply(okResponse("<?xml version=\"1.0\"?><a>\n<b></a>")));
  EXPECT_TRUE(broken.find(" (line 2, pos ") != std::string::npos && broken.ends_with(") -1 -65795"))
      << broken;
  EXPECT_NE(testing::internal::GetCapturedStderr().find("XML Parse error occurred: "), std::string::npos);
}

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

TEST(Transaction, ReadsAReplyByteByByteAndALargeOne) {
  EXPECT_EQ(callOnce(Script().expectRequest().sendInPieces(kOK, 1)), "ok");
  std::string large(300000, 'x');
  EXPECT_EQ(callOnce(reply(okResponse(replyBody(large)))), large);
}

TEST(Transaction, EveryCutOfAReplyEndsInOneFault) {
  const std::string prefix = "Stream Error " + std::to_string(kBQStreamErrorDomainHTTP) + " ";
  std::vector<Script> scripts;
  for (size_t length = 0; length < kOK.size(); ++length)
    scripts.push_back(replyAndClose(kOK.substr(0, length)));
  ScriptedPeer peer(scripts);
  for (size_t length = 0; length < kOK.size(); ++length) {
    int error = length == 0 ? kBQStreamHTTPErrorEmptyReply : kBQStreamHTTPErrorConnectionLost;
    EXPECT_EQ(failureOf(TestCall(peer.url()).invoke()), prefix + std::to_string(error)) << length;
  }
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

TEST(Transaction, FollowsRedirectsUnlessToldNotTo) {
  ScriptedPeer target({replies({kOK, kOK})});
  const Script moved =
      reply("HTTP/1.1 307 Moved\r\nLocation: " + target.url("/new") + "\r\nContent-Length: 0\r\n\r\n");
  EXPECT_EQ(callOnce(moved), "ok");
  EXPECT_EQ(callOnce(moved, [](TestCall& call) { call.set(kVXHTTPFollowsRedirects, kBQBooleanTrue); }), "ok");
  EXPECT_EQ(callOnce(moved, [](TestCall& call) { call.set(kVXHTTPFollowsRedirects, kBQBooleanFalse); }),
            "HTTP/1.1 307 Moved -1 -65795");
  EXPECT_EQ(headersOf(target.requests().at(0))[0], "POST /new HTTP/1.1");
}

TEST(Transaction, GoesThroughAProxy) {
  ScriptedPeer proxy({reply(kOK)});
  TestCall call("http://unreachable.invalid/RPC2");
  EXPECT_EQ(valueOf(call.set(kVXHTTPProxy, url(proxy.url()).get()).invoke()), "ok");
  EXPECT_EQ(headersOf(proxy.requests().at(0))[0], "POST http://unreachable.invalid/RPC2 HTTP/1.1");
}

TEST(Transaction, BoundsTheReplyAsTheLimitSays) {
  const int size = static_cast<int>(replyBody("ok").size());
  const std::string tooLarge = "Stream Error " + std::to_string(kBQStreamErrorDomainHTTP) + " " +
                               std::to_string(kBQStreamHTTPErrorReplyTooLarge);
  const std::pair<int, std::string> rows[] = {
      {size, "ok"}, {size - 1, tooLarge}, {1, tooLarge}, {0, "ok"}, {-1, "ok"}};
  for (const auto& [limit, expected] : rows) {
    ScriptedPeer peer({reply(kOK)});
    EXPECT_EQ(valueOf(TestCall(peer.url()).set(kVXHTTPReplySizeLimit, limit).invoke()), expected) << limit;
  }
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

TEST(Machine, EndsInEachStateThatHasNoWork) {
  const std::pair<int32_t, const char*> rows[] = {{1, "Timed Out Waiting For Open -1 -65796"},
                                                  {4, "Timed Out -1 -65796"},
                                                  {5, "Uknown State 2 -65794"},
                                                  {-1, "Uknown State 2 -65794"}};
  for (auto [state, expected] : rows) {
    Machine machine;
    machine.source->setState(state);
    machine.source->perform();
    machine.source->perform();
    EXPECT_EQ(machine.outcomes, std::vector<std::string>{expected});
    EXPECT_EQ(machine.source->getState(), state);
  }
}

TEST(Machine, TimerCountsOnlyBeforeTheEndOfTheReply) {
  const int32_t expected[] = {4, 4, 4, 3, 4};
  for (int32_t state = 0; state < 5; ++state) {
    Machine machine;
    machine.source->setState(state);
    machine.source->timedOut();
    EXPECT_EQ(machine.source->getState(), expected[state]) << state;
  }
}

TEST(Machine, EventsSetTheStateAndUnknownOnesEndTheCall) {
  Machine machine;
  const std::pair<BQStreamEventType, int32_t> rows[] = {{kBQStreamEventOpenCompleted, 0},
                                                        {kBQStreamEventHasBytesAvailable, 2},
                                                        {kBQStreamEventEndEncountered, 3},
                                                        {kBQStreamEventCanAcceptBytes, 3},
                                                        {kBQStreamEventHasBytesAvailable, 3}};
  for (auto [event, state] : rows) {
    machine.source->readStreamCallback(event);
    EXPECT_EQ(machine.source->getState(), state) << "events behind the end of the call are ignored";
  }
  EXPECT_EQ(machine.outcomes, std::vector<std::string>{"Unlikely state for a read stream 2 -65794"});
}

TEST(Transaction, BytesBehindTheEndOfACallDoNotKeepTheLoopBusy) {
  Gate gate;
  ScriptedPeer peer({Script().expectRequest().waitFor(gate).send(okResponse(replyBody("late")))});
  TestCall call(peer.url());
  VXMethodInvocationScheduleWithRunLoop(call.get(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  while (peer.requests().empty()) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0.01, true);
  gVXDebug = gVXDebugVerbose = 1;
  testing::internal::CaptureStderr();
  auto* source = static_cast<HTTPClosureSource*>(call.get()->wrapped->getSource());
  source->readStreamCallback(kBQStreamEventCanAcceptBytes);
  gate.open();
  while (peer.openConnectionCount() > 0) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0.01, true);
  for (int pass = 0; pass < 100; ++pass) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, false);
  std::string printed = testing::internal::GetCapturedStderr();
  gVXDebug = gVXDebugVerbose = 0;
  const std::string ignored = "We shouldn't be serviging any more callback signals";
  size_t first = printed.find(ignored);
  EXPECT_NE(first, std::string::npos);
  EXPECT_EQ(printed.find(ignored, first + 1), std::string::npos);
}

}  // namespace
}  // namespace vx
