/* The life of a stream: events and their modes, client, properties, release. */
#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

#include "platform/http/Exchange.h"

namespace {

using namespace values;

const BQString* const kOtherMode = BQSTR("another mode");

BQRunLoopRunResult pass() {
  return BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, false);
}

TEST(ReadStream, StatusFollowsTheTransfer) {
  Gate head, body;
  Script script = Script().expectRequest().waitFor(head).send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n");
  ScriptedPeer peer({script.waitFor(body).send("body").waitForClose()});
  Exchange exchange(peer.url());
  exchange.readsBytes = false;
  BQReadStream* stream = exchange.stream();
  EXPECT_EQ(BQReadStreamGetStatus(stream), kBQStreamStatusNotOpen);
  ASSERT_TRUE(exchange.open());
  EXPECT_EQ(BQReadStreamGetStatus(stream), kBQStreamStatusOpening);
  EXPECT_EQ(exchange.statusLine(), "(none)");
  head.open();
  EXPECT_TRUE(runUntil([&] { return exchange.events() == "open"; }));
  EXPECT_EQ(BQReadStreamGetStatus(stream), kBQStreamStatusOpen);
  EXPECT_EQ(exchange.statusLine(), "HTTP/1.1 200 OK");
  EXPECT_FALSE(BQReadStreamHasBytesAvailable(stream));
  uint8_t buffer[8];
  EXPECT_EQ(BQReadStreamRead(stream, buffer, sizeof buffer), 0);
  body.open();
  EXPECT_TRUE(runUntil([&] { return exchange.events() == "open bytes"; }));
  EXPECT_TRUE(BQReadStreamHasBytesAvailable(stream));
  for (BQIndex count : {3, 1}) EXPECT_EQ(BQReadStreamRead(stream, buffer, 3), count);
  EXPECT_EQ(BQReadStreamGetStatus(stream), kBQStreamStatusAtEnd);
  EXPECT_TRUE(exchange.runToEnd());
  EXPECT_EQ(exchange.events(), "open bytes end");
  EXPECT_EQ(BQReadStreamRead(stream, buffer, 3), 0);
  EXPECT_FALSE(BQReadStreamOpen(stream));
  BQReadStreamClose(stream);
  EXPECT_EQ(BQReadStreamGetStatus(stream), kBQStreamStatusClosed);
  EXPECT_EQ(exchange.statusLine(), "HTTP/1.1 200 OK");
}

/* Every other report is ignored. */
TEST(ReadStream, BytesAreReportedUntilTheyAreRead) {
  ScriptedPeer peer({reply(okResponse("hello"))});
  Exchange exchange(peer.url());
  int reports = 0;
  exchange.readsBytes = false;
  exchange.onEvent = [&](BQStreamEventType event) {
    uint8_t byte;
    if (event != kBQStreamEventHasBytesAvailable || ++reports % 2 != 0) return;
    EXPECT_EQ(BQReadStreamRead(exchange.stream(), &byte, 1), 1);
  };
  EXPECT_EQ(exchange.run().events(), "open bytes end");
  EXPECT_EQ(reports, 10);
}

TEST(ReadStream, TakesWhatIsDueTheRestAndItsConnectionToItsNewMode) {
  Gate rest;
  Script script = Script().expectRequest().send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nab");
  ScriptedPeer peer({script.waitFor(rest).send("cd").then(reply(okResponse("next")))});
  Exchange exchange(peer.url());
  exchange.readsBytes = false;
  ASSERT_TRUE(exchange.open());
  ASSERT_TRUE(runUntil([&] { return exchange.events() == "open bytes"; }));
  BQReadStreamUnscheduleFromRunLoop(exchange.stream(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  exchange.readsBytes = true;
  BQReadStreamScheduleWithRunLoop(exchange.stream(), BQRunLoopGetCurrent(), kOtherMode);
  EXPECT_EQ(pass(), kBQRunLoopRunFinished);
  EXPECT_EQ(exchange.body(), "");
  EXPECT_TRUE(runUntil([&] { return exchange.body() == "ab"; }, kOtherMode));
  rest.open();
  EXPECT_TRUE(exchange.runToEnd(kOtherMode));
  EXPECT_EQ(exchange.body(), "abcd");
  EXPECT_EQ(Exchange(peer.url()).run().answer(), "next");
  EXPECT_EQ(peer.connectionCount(), 1u);
}

TEST(ReadStream, WithoutAClientCanBePolled) {
  ScriptedPeer peer({reply(okResponse("polled"))});
  Exchange exchange(peer.url());
  EXPECT_FALSE(BQReadStreamOpen(exchange.stream())) << "it is on no run loop";
  EXPECT_EQ(exchange.answer(), "(posix 22)");
  exchange.releaseStream();
  BQReadStream* stream = exchange.stream();
  BQReadStreamScheduleWithRunLoop(stream, BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  ASSERT_TRUE(BQReadStreamOpen(stream));
  EXPECT_FALSE(BQReadStreamOpen(stream));
  ASSERT_TRUE(runUntil([&] { return BQReadStreamHasBytesAvailable(stream); }));
  pass();
  EXPECT_EQ(BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, true), kBQRunLoopRunTimedOut) << "reports to nobody";
  runUntil([&] {
    exchange.readAll();
    return BQReadStreamGetStatus(stream) == kBQStreamStatusAtEnd;
  });
  EXPECT_EQ(exchange.body(), "polled");
}

TEST(ReadStream, ClientGetsOnlyTheEventsOfItsMask) {
  ScriptedPeer peer({reply(okResponse(""))});
  Exchange exchange(peer.url());
  ASSERT_TRUE(exchange.open());
  std::vector<BQStreamEventType> events;
  BQStreamClientContext context = {0, &events, nullptr, nullptr, nullptr};
  auto record = [](BQReadStream*, BQStreamEventType event, void* info) {
    static_cast<std::vector<BQStreamEventType>*>(info)->push_back(event);
  };
  ASSERT_TRUE(BQReadStreamSetClient(exchange.stream(), kBQStreamEventEndEncountered, record, &context));
  runUntil([&] { return !events.empty(); });
  EXPECT_EQ(events, std::vector<BQStreamEventType>{kBQStreamEventEndEncountered});
  EXPECT_EQ(exchange.events(), "");
}

int references = 0;

void* addReference(void* info) {
  ++references;
  return info;
}

/* The stream may be being finalised. */
void dropReference(void* stream) {
  --references;
  BQReadStreamUnscheduleFromRunLoop(static_cast<BQReadStream*>(stream), BQRunLoopGetCurrent(), kOtherMode);
}

TEST(ReadStream, ClientInfoIsRetainedAndReleasedOnce) {
  Exchange exchange("http://127.0.0.1/");
  BQReadStream* stream = exchange.stream();
  BQStreamClientContext context = {0, stream, addReference, dropReference, nullptr};
  auto ignore = [](BQReadStream*, BQStreamEventType, void*) {};
  for (int expected : {1, 1, 0, 1}) {
    EXPECT_TRUE(BQReadStreamSetClient(stream, kBQStreamEventEndEncountered,
                                      expected == 0 ? BQReadStreamClientCallBack() : ignore, &context));
    EXPECT_EQ(references, expected);
    EXPECT_FALSE(BQReadStreamSetClient(stream, 32, ignore, &context));
    EXPECT_EQ(references, expected);
  }
  BQReadStreamScheduleWithRunLoop(stream, BQRunLoopGetCurrent(), kOtherMode);
  exchange.releaseStream();
  EXPECT_EQ(references, 0);
}

TEST(ReadStream, CanBeReleasedOrClosedInsideEveryEvent) {
  for (BQStreamEventType last : {kBQStreamEventOpenCompleted, kBQStreamEventHasBytesAvailable,
                                 kBQStreamEventEndEncountered, kBQStreamEventErrorOccurred}) {
    for (bool isReleased : {true, false}) {
      SCOPED_TRACE(std::to_string(last) + (isReleased ? " released" : " closed"));
      ScriptedPeer peer({replyAndClose(last == kBQStreamEventErrorOccurred ? "" : okResponse("a"))});
      Exchange exchange(peer.url());
      bool isDone = false;
      exchange.onEvent = [&](BQStreamEventType event) {
        EXPECT_FALSE(isDone) << "event " << event << " after the last";
        if (event != last) return;
        isDone = true;
        isReleased ? exchange.releaseStream() : BQReadStreamClose(exchange.stream());
      };
      ASSERT_TRUE(exchange.open());
      EXPECT_TRUE(runUntil([&] { return isDone; }));
      EXPECT_EQ(pass(), kBQRunLoopRunFinished);
    }
  }
}

/* One stream's event ends another, whose event is due in the same pass. */
TEST(ReadStream, CanBeReleasedInsideTheEventOfAnother) {
  ScriptedPeer peer({reply(okResponse("a"))});
  Exchange first(peer.url()), second(peer.url());
  int events = 0;
  first.onEvent = [&](BQStreamEventType) { ++events, second.releaseStream(); };
  second.onEvent = [&](BQStreamEventType) { ++events, first.releaseStream(); };
  ASSERT_TRUE(first.open() && second.open());
  EXPECT_TRUE(runUntil([&] { return events > 0; }));
  while (pass() != kBQRunLoopRunFinished && events < 10) {
  }
  EXPECT_TRUE(first.events().empty() || second.events().empty());
}

TEST(ReadStream, EventCanRunTheLoopAgain) {
  ScriptedPeer peer({replyAndClose(okResponse("outer")), replyAndClose(okResponse("inner"))});
  Exchange outer(peer.url()), inner(peer.url());
  outer.onEvent = [&](BQStreamEventType event) {
    if (event != kBQStreamEventOpenCompleted) return;
    EXPECT_TRUE(inner.open(kOtherMode) && inner.runToEnd(kOtherMode));
  };
  outer.run();
  EXPECT_EQ(outer.body() + inner.body(), "outerinner");
}

TEST(ReadStream, PropertiesAreCheckedAndKept) {
  Exchange exchange("http://127.0.0.1/");
  BQReadStream* stream = exchange.stream();
  const BQString* const key = kBQStreamPropertyHTTPMaximumReplySize;
  auto limit = integer(5);
  EXPECT_TRUE(BQReadStreamSetProperty(stream, key, limit.get()));
  EXPECT_EQ(own(BQReadStreamCopyProperty(stream, key)).get(), limit.get());
  EXPECT_TRUE(BQReadStreamSetProperty(stream, key, nullptr));
  EXPECT_EQ(BQReadStreamCopyProperty(stream, key), nullptr);
  for (const BQString* wrong :
       {kBQStreamPropertyHTTPProxy, kBQStreamPropertyHTTPResponseHeader, BQSTR("unknown")}) {
    EXPECT_FALSE(BQReadStreamSetProperty(stream, wrong, limit.get())) << text(wrong);
  }
  BQReadStreamOpen(stream);
  EXPECT_FALSE(BQReadStreamSetProperty(stream, key, limit.get()));
  auto response = own(BQHTTPMessageCreateResponse(BQSTR("HTTP/1.1 200 OK")));
  EXPECT_EQ(BQReadStreamCreateForHTTPRequest(response.get()), nullptr);
}

TEST(ReadStream, OutlivesItsThread) {
  ScriptedPeer peer({Script().expectRequest().waitForClose()});
  Exchange exchange(peer.url());
  std::thread([&] { EXPECT_TRUE(exchange.open()); }).join();
  EXPECT_EQ(BQReadStreamGetStatus(exchange.stream()), kBQStreamStatusClosed);
  EXPECT_EQ(exchange.events(), "");
}

TEST(ReadStream, EachErrorHasASentenceOfItsOwn) {
  auto describe = [](BQStreamErrorDomain domain, int32_t error) {
    return text(own(BQStreamErrorCopyDescription({domain, error})));
  };
  EXPECT_EQ(describe(0, 0), "no error occurred");
  EXPECT_EQ(describe(kBQStreamErrorDomainPOSIX, EMFILE), "Too many open files");
  for (auto domain : {kBQStreamErrorDomainCustom, 77})
    EXPECT_EQ(describe(domain, 3), "an unknown error occurred");
  const std::pair<BQStreamErrorDomain, std::vector<int32_t>> domains[] = {
      {kBQStreamErrorDomainPOSIX, {ECONNREFUSED, ECONNRESET, EPIPE, ETIMEDOUT, EHOSTUNREACH, ENETUNREACH}},
      {kBQStreamErrorDomainTLS, {1, 2, 3, 4, 99}},
      {kBQStreamErrorDomainHTTP, {1, 2, 3, 4, 5, 6, 7, kBQStreamHTTPErrorOther, 999}},
      {kBQStreamErrorDomainResolver, {1, 2}}};
  std::set<std::string> sentences;
  for (const auto& [domain, errors] : domains) {
    for (int32_t error : errors) EXPECT_TRUE(sentences.insert(describe(domain, error)).second) << error;
  }
}

}  // namespace
