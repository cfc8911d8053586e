#include "transport/HTTPClosureSource.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "Call.h"
#include "api/MethodInvocationHandle.h"
#include "diag/Switches.h"
#include "support/ScriptedPeer.h"

namespace vx {
namespace {

std::string response(const std::string& head, const std::string& body) {
  return head + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

std::string callOnce(const Script& script, void (*configure)(TestCall&) = nullptr) {
  ScriptedPeer peer({script});
  TestCall call(peer.url("/RPC2"));
  if (configure != nullptr) configure(call);
  auto result = call.invoke();
  return VXMethodResultIsFault(result.get()) ? failureOf(result.get()) : valueOf(result.get());
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
  struct Row {
    const char* url;
    void (*configure)(TestCall&);
    const char* expected;
  };
  const Row rows[] = {
      {"http:///path", nullptr, "Missing host in URL 2 -65794"},
      {"mailto:somebody", nullptr, "Missing host in URL 2 -65794"},
      {"http://127.0.0.1:1/", [](TestCall& call) { call.set(kVXPostingMethod, BQSTR("NO TOKEN")); },
       "Can't create HTTP message request 2 -65794"},
      {"http://127.0.0.1:1/", [](TestCall& call) { call.set(kVXHTTPVersion, BQSTR("HTTP/9")); },
       "Can't create HTTP message request 2 -65794"},
      {"http://127.0.0.1:1/",
       [](TestCall& call) {
         const void *name = BQSTR("X-Extra"), *value = BQSTR("a\r\nInjected: b");
         call.set(kVXHTTPExtraHeaders, own(BQDictionaryCreate(&name, &value, 1)).get());
       },
       "Can't create HTTP message request 2 -65794"},
      {"http://127.0.0.1:1/",
       [](TestCall& call) {
         call.set(kVXHTTPMessage, own(BQHTTPMessageCreateResponse(BQSTR("HTTP/1.1 200 OK"))).get());
       },
       "Can't create read stream from http message 2 -65794"},
      {"ftp://127.0.0.1:1/", nullptr, "Can't issue read stream open 2 -65794"},
      {"http://127.0.0.1:1/",
       [](TestCall& call) {
         const void *name = BQSTR("self"), *value = arrayThatHoldsItself();
         VXMethodInvocationSetParameters(call.get(), own(BQDictionaryCreate(&name, &value, 1)).get(),
                                         nullptr);
       },
       "Can't serialize request 2 -65794"},
  };
  for (const Row& row : rows) {
    TestCall call(row.url);
    if (row.configure != nullptr) row.configure(call);
    EXPECT_EQ(failureOf(call.invoke().get()), row.expected) << row.url;
  }
}

TEST(Transaction, NullMethodNameMakesNoRequest) {
  auto url = own(BQURLCreateWithString(BQSTR("http://127.0.0.1:1/"), nullptr));
  auto invocation =
      own(static_cast<const void*>(VXMethodInvocationCreate(url.get(), nullptr, kVXXMLRPCProtocol)));
  auto handle = static_cast<VXMethodInvocationRef>(const_cast<void*>(invocation.get()));
  EXPECT_EQ(failureOf(own(VXMethodInvocationInvoke(handle)).get()), "Can't serialize request 2 -65794");
}

TEST(Transaction, ReadsReplyInWhateverPiecesItComes) {
  std::string bytes = okResponse(replyBody("pieces"));
  for (size_t size = 1; size <= 5; ++size) {
    EXPECT_EQ(callOnce(Script().expectRequest().sendInPieces(bytes, size)), "pieces") << size;
  }
  std::string large(300000, 'x');
  EXPECT_EQ(callOnce(reply(okResponse(replyBody(large)))), large);
}

TEST(Transaction, EveryCutOfAReplyEndsInOneFault) {
  std::string bytes = okResponse(replyBody("cut"));
  std::vector<Script> scripts;
  for (size_t length = 0; length < bytes.size(); ++length)
    scripts.push_back(replyAndClose(bytes.substr(0, length)));
  ScriptedPeer peer(scripts);
  for (size_t length = 0; length < bytes.size(); ++length) {
    TestCall call(peer.url());
    EXPECT_EQ(failureOf(call.invoke().get()).rfind("Stream Error ", 0), 0u) << length;
  }
}

TEST(Transaction, EverySplitOfAReplyGivesTheResult) {
  std::string bytes = okResponse(replyBody("split"));
  std::vector<Script> scripts;
  for (size_t at = 1; at < bytes.size(); ++at) {
    scripts.push_back(Script().expectRequest().send(bytes.substr(0, at)).send(bytes.substr(at)));
  }
  ScriptedPeer peer(scripts);
  for (size_t at = 1; at < bytes.size(); ++at) {
    TestCall call(peer.url());
    EXPECT_EQ(valueOf(call.invoke().get()), "split") << at;
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
  ScriptedPeer peer({reply(okResponse(replyBody("x")))});
  TestCall call(peer.url("/RPC2?a=b"));
  configure(call);
  EXPECT_EQ(valueOf(call.invoke().get()), "x");
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
              const void* names[] = {BQSTR("Content-Type"), BQSTR("SOAPAction")};
              const void* values[] = {BQSTR("application/xml"), BQSTR("\"urn:a\"")};
              call.set(kVXHTTPExtraHeaders, own(BQDictionaryCreate(names, values, 2)).get());
            }),
            (Lines{"POST /RPC2?a=b HTTP/1.1", "Content-Type: application/xml", "Host: 127.0.0.1",
                   "SOAPAction: \"urn:a\"", agent}));
}

TEST(Transaction, HostOfAnIPv6AddressIsInBrackets) {
  ScriptedPeer peer({reply(okResponse(replyBody("x")))}, true);
  if (!peer.isListening()) GTEST_SKIP() << "the machine has no IPv6";
  TestCall call(peer.url());
  EXPECT_EQ(valueOf(call.invoke().get()), "x");
  EXPECT_NE(peer.requests().at(0).find("\r\nHost: [::1]\r\n"), std::string::npos);
}

TEST(Transaction, TemplateGivesMethodURLAndHeaders) {
  ScriptedPeer peer({reply(okResponse(replyBody("x")))});
  auto url = own(BQURLCreateWithString(makeText(peer.url("/template")).get(), nullptr));
  auto message = own(BQHTTPMessageCreateRequest(BQSTR("PATCH"), url.get(), kBQHTTPVersion1_1));
  BQHTTPMessageSetHeaderFieldValue(message.get(), BQSTR("user-agent"), BQSTR("mine"));
  BQHTTPMessageSetHeaderFieldValue(message.get(), BQSTR("X-Template"), BQSTR("kept"));
  TestCall call("http://127.0.0.1/elsewhere");
  call.set(kVXHTTPMessage, message.get()).set(kVXPostingMethod, BQSTR("PUT"));
  EXPECT_EQ(valueOf(call.invoke().get()), "x");
  EXPECT_EQ(headersOf(peer.requests().at(0)),
            (std::vector<std::string>{"PATCH /template HTTP/1.1", "Content-Type: text/xml", "Host: 127.0.0.1",
                                      "X-Template: kept", "user-agent: mine"}));
  EXPECT_EQ(own(BQHTTPMessageCopyBody(message.get())), nullptr) << "the template itself is not changed";
}

TEST(Transaction, FollowsRedirectsUnlessToldNotTo) {
  ScriptedPeer target({replies({okResponse(replyBody("moved")), okResponse(replyBody("moved"))})});
  std::string head =
      "HTTP/1.1 307 Moved\r\nLocation: " + target.url("/new") + "\r\nContent-Length: 0\r\n\r\n";
  auto follow = [](TestCall& call) { call.set(kVXHTTPFollowsRedirects, kBQBooleanTrue); };
  auto stay = [](TestCall& call) { call.set(kVXHTTPFollowsRedirects, kBQBooleanFalse); };
  EXPECT_EQ(callOnce(reply(head)), "moved");
  EXPECT_EQ(callOnce(reply(head), follow), "moved");
  EXPECT_EQ(callOnce(reply(head), stay), "HTTP/1.1 307 Moved -1 -65795");
  EXPECT_EQ(headersOf(target.requests().at(0))[0], "POST /new HTTP/1.1");
}

TEST(Transaction, GoesThroughAProxy) {
  ScriptedPeer proxy({reply(okResponse(replyBody("by proxy")))});
  auto url = own(BQURLCreateWithString(makeText(proxy.url()).get(), nullptr));
  TestCall call("http://unreachable.invalid/RPC2");
  call.set(kVXHTTPProxy, url.get());
  EXPECT_EQ(valueOf(call.invoke().get()), "by proxy");
  EXPECT_EQ(headersOf(proxy.requests().at(0))[0], "POST http://unreachable.invalid/RPC2 HTTP/1.1");
}

TEST(Transaction, BoundsTheReplyAsTheLimitSays) {
  const std::string body = replyBody("bounded");
  const int size = static_cast<int>(body.size());
  struct Row {
    int limit;
    std::string expected;
  };
  const std::string tooLarge = "Stream Error " + std::to_string(kBQStreamErrorDomainHTTP) + " " +
                               std::to_string(kBQStreamHTTPErrorReplyTooLarge);
  for (const Row& row : {Row{size, "bounded"}, Row{size - 1, tooLarge}, Row{1, tooLarge}, Row{0, "bounded"},
                         Row{-1, "bounded"}}) {
    ScriptedPeer peer({reply(okResponse(body))});
    TestCall call(peer.url());
    call.set(kVXHTTPReplySizeLimit, row.limit);
    auto result = call.invoke();
    EXPECT_EQ(VXMethodResultIsFault(result.get()) ? failureOf(result.get()) : valueOf(result.get()),
              row.expected)
        << row.limit;
  }
}

TEST(Transaction, TrustsTheAuthorityOfItsPropertyAlone) {
  auto failure = [](const BQString* file) {
    ScriptedPeer peer({Script().expectFirstBytes().send("HTTP/1.1 400 Bad Request\r\n\r\n").waitForClose()});
    TestCall call("https://127.0.0.1:" + std::to_string(peer.port()) + "/");
    return failureOf(call.set(kVXHTTPCertificateAuthorityFile, file).invoke().get());
  };
  const std::string tls = "Stream Error " + std::to_string(kBQStreamErrorDomainTLS) + " ";
  EXPECT_EQ(failure(nullptr), tls + std::to_string(kBQStreamTLSErrorHandshake)) << "the peer speaks no TLS";
  EXPECT_EQ(failure(BQSTR("/no/such/file.pem")), tls + std::to_string(kBQStreamTLSErrorCertificate));
  EXPECT_EQ(failure(BQSTR("")), "Can't issue read stream open 2 -65794");
}

TEST(Transaction, CapturesWhatWasAskedFor) {
  struct Row {
    const BQString* key;
    const char* part;
  };
  const Row rows[] = {{kVXDebugOutgoingHeaders, "\"Content-Type\": \"text/xml\""},
                      {kVXDebugOutgoingBody, "<methodName>test.method</methodName>"},
                      {kVXDebugIncomingHeaders, "\"Content-Length\""},
                      {kVXDebugIncomingBody, "<string>seen</string>"}};
  for (const Row& row : rows) {
    ScriptedPeer peer({reply(okResponse(replyBody("seen")))});
    TestCall call(peer.url());
    call.set(row.key, kBQBooleanTrue);
    auto result = call.invoke();
    EXPECT_NE(textOfObject(BQDictionaryGetValue(result.get(), row.key)).find(row.part), std::string::npos);
    EXPECT_EQ(BQDictionaryGetCount(result.get()), 3) << "result, response message and the one capture";
  }
}

TEST(Transaction, CapturesAreChosenAnewForTheNextCall) {
  ScriptedPeer peer({replies({okResponse(replyBody("x")), okResponse(replyBody("x"))})});
  TestCall call(peer.url());
  EXPECT_EQ(BQDictionaryGetValue(call.invoke().get(), kVXDebugIncomingBody), nullptr);
  call.set(kVXDebugIncomingBody, kBQBooleanTrue);
  EXPECT_NE(BQDictionaryGetValue(call.invoke().get(), kVXDebugIncomingBody), nullptr);
}

TEST(Transaction, CapturesAreChosenWhenTheSourceIsMade) {
  ScriptedPeer peer({reply(okResponse(replyBody("x")))});
  TestCall call(peer.url());
  VXMethodInvocationUnscheduleFromRunLoop(call.get(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  call.set(kVXDebugIncomingBody, kBQBooleanTrue);
  EXPECT_EQ(BQDictionaryGetValue(call.invoke().get(), kVXDebugIncomingBody), nullptr);
}

TEST(Transaction, DebugSwitchPrintsTheTransaction) {
  ScriptedPeer peer({reply(okResponse(replyBody("x")))});
  TestCall call(peer.url());
  gVXDebug = 1;
  testing::internal::CaptureStderr();
  auto result = call.invoke();
  std::string printed = testing::internal::GetCapturedStderr();
  gVXDebug = 0;
  EXPECT_EQ(printed.rfind("Transaction Log:Outgoing Headers: {\"User-Agent\": ", 0), 0u) << printed;
  for (const char* part : {"\nOutgoing Body: <?xml", "\nIncoming Headers: {", "\nIncoming Body: <?xml"}) {
    EXPECT_NE(printed.find(part), std::string::npos) << part;
  }
  EXPECT_TRUE(printed.ends_with("</methodResponse>\n\n"));
  EXPECT_EQ(BQDictionaryGetCount(result.get()), 6) << "all four captures";
}

/* Steps the machine by hand through what a peer cannot cause. */
class MachineTest : public testing::Test {
 protected:
  MachineTest() : call("http://127.0.0.1:1/") {
    VXClientContext context = {0, this, nullptr, nullptr, nullptr};
    VXMethodInvocationSetCallBack(
        call.get(),
        [](VXMethodInvocationRef, void* info, const BQDictionary* result) {
          static_cast<MachineTest*>(info)->failures.push_back(failureOf(result));
          BQRelease(result);
        },
        &context);
    source = static_cast<HTTPClosureSource*>(call.get()->wrapped->getSource());
    source->getSourceCreatingIfNecessary();
  }

  TestCall call;
  HTTPClosureSource* source;
  std::vector<std::string> failures;
};

TEST_F(MachineTest, EndsInEachStateThatHasNoWork) {
  struct Row {
    int32_t state;
    const char* expected;
  };
  for (const Row& row : {Row{1, "Timed Out Waiting For Open -1 -65796"}, Row{4, "Timed Out -1 -65796"},
                         Row{5, "Uknown State 2 -65794"}, Row{-1, "Uknown State 2 -65794"}}) {
    MachineTest::failures.clear();
    source = static_cast<HTTPClosureSource*>(call.get()->wrapped->getSourceForCall());
    source->setState(row.state);
    source->perform();
    source->perform();
    EXPECT_EQ(failures, std::vector<std::string>{row.expected});
    EXPECT_EQ(source->getState(), row.state);
  }
}

TEST_F(MachineTest, TimerCountsOnlyBeforeTheEndOfTheReply) {
  const int32_t expected[] = {4, 4, 4, 3, 4};
  for (int32_t state = 0; state < 5; ++state) {
    source->setState(state);
    source->timedOut();
    EXPECT_EQ(source->getState(), expected[state]) << state;
  }
}

TEST_F(MachineTest, EventsSetTheStateAndUnknownOnesEndTheCall) {
  source->readStreamCallback(kBQStreamEventOpenCompleted);
  EXPECT_EQ(source->getState(), 0);
  source->readStreamCallback(kBQStreamEventHasBytesAvailable);
  EXPECT_EQ(source->getState(), 2);
  source->readStreamCallback(kBQStreamEventEndEncountered);
  EXPECT_EQ(source->getState(), 3);
  source->readStreamCallback(kBQStreamEventCanAcceptBytes);
  source->readStreamCallback(kBQStreamEventHasBytesAvailable);
  EXPECT_EQ(failures, std::vector<std::string>{"Unlikely state for a read stream 2 -65794"});
  EXPECT_EQ(source->getState(), 3) << "events behind the end of the call are ignored";
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

TEST(Transaction, LogsItsStepsWhenVerbose) {
  ScriptedPeer peer({reply(okResponse(replyBody("x")))});
  TestCall call(peer.url());
  gVXDebug = gVXDebugVerbose = 1;
  testing::internal::CaptureStderr();
  call.invoke();
  std::string printed = testing::internal::GetCapturedStderr();
  gVXDebug = gVXDebugVerbose = 0;
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

}  // namespace
}  // namespace vx
