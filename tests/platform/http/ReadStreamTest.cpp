/* The life of a stream: events and their modes, client, properties, release. */
#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

#include "platform/http/Exchange.h"
#include "support/ScriptedPeer.h"

namespace {

using namespace values;

const BQString* const kOtherMode = BQSTR("another mode");

BQRunLoopRunResult pass(const BQString* mode = kBQRunLoopDefaultMode) {
  return BQRunLoopRunInMode(mode, 0, false);
}

TEST(ReadStream, StatusFollowsTheTransfer) {
  Gate headers, body;
  ScriptedPeer peer({Script()
                         .expectRequest()
                         .waitFor(headers)
                         .send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\n")
                         .waitFor(body)
                         .send("body")
                         .waitForClose()});
  Exchange exchange(peer.url());
  exchange.readsBytes = false;
  BQReadStream* stream = exchange.stream();
  EXPECT_EQ(BQReadStreamGetStatus(stream), kBQStreamStatusNotOpen);
  ASSERT_TRUE(exchange.open());
  EXPECT_EQ(BQReadStreamGetStatus(stream), kBQStreamStatusOpening);
  EXPECT_EQ(exchange.statusLine(), "(none)");
  headers.open();
  EXPECT_TRUE(Exchange::runUntil([&] { return exchange.events() == "open"; }));
  EXPECT_EQ(BQReadStreamGetStatus(stream), kBQStreamStatusOpen);
  EXPECT_EQ(exchange.statusLine(), "HTTP/1.1 200 OK");
  EXPECT_FALSE(BQReadStreamHasBytesAvailable(stream));
  uint8_t buffer[8];
  EXPECT_EQ(BQReadStreamRead(stream, buffer, sizeof buffer), 0);
  body.open();
  EXPECT_TRUE(Exchange::runUntil([&] { return exchange.events() == "open bytes"; }));
  EXPECT_TRUE(BQReadStreamHasBytesAvailable(stream));
  EXPECT_EQ(BQReadStreamRead(stream, nullptr, 8), 0);
  EXPECT_EQ(BQReadStreamRead(stream, buffer, 3), 3);
  EXPECT_EQ(BQReadStreamRead(stream, buffer, 3), 1);
  EXPECT_EQ(BQReadStreamGetStatus(stream), kBQStreamStatusAtEnd);
  EXPECT_TRUE(Exchange::runUntil([&] { return exchange.isOver(); }));
  EXPECT_EQ(exchange.events(), "open bytes end");
  EXPECT_EQ(BQReadStreamRead(stream, buffer, 3), 0);
  BQReadStreamClose(stream);
  EXPECT_EQ(BQReadStreamGetStatus(stream), kBQStreamStatusClosed);
  EXPECT_EQ(exchange.statusLine(), "HTTP/1.1 200 OK");
}

TEST(ReadStream, BytesAreReportedUntilTheyAreRead) {
  ScriptedPeer peer({reply(okResponse("hello"))});
  Exchange exchange(peer.url());
  int reports = 0;
  exchange.readsBytes = false;
  exchange.onEvent = [&](BQStreamEventType event) {
    if (event != kBQStreamEventHasBytesAvailable) return;
    uint8_t byte;
    /* Every other report is ignored. */
    if (++reports % 2 == 0) {
      EXPECT_EQ(BQReadStreamRead(exchange.stream(), &byte, 1), 1);
    }
  };
  exchange.run();
  EXPECT_EQ(exchange.events(), "open bytes end");
  EXPECT_EQ(reports, 10);
}

TEST(ReadStream, EventsComeOnlyInItsOwnModes) {
  ScriptedPeer peer({replyAndClose(okResponse("a"))});
  Exchange here(peer.url()), there(peer.url());
  ASSERT_TRUE(here.open());
  ASSERT_TRUE(there.open(kOtherMode));
  EXPECT_TRUE(Exchange::runUntil([&] { return there.isOver(); }, kOtherMode));
  EXPECT_EQ(here.events(), "");
  EXPECT_TRUE(Exchange::runUntil([&] { return here.isOver(); }));
  EXPECT_EQ(here.body() + there.body(), "aa");
}

TEST(ReadStream, TakesWhatIsDueAndTheRestToItsNewMode) {
  Gate rest;
  ScriptedPeer peer({Script()
                         .expectRequest()
                         .send("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nab")
                         .waitFor(rest)
                         .send("cd")
                         .waitForClose()});
  Exchange exchange(peer.url());
  exchange.readsBytes = false;
  ASSERT_TRUE(exchange.open());
  ASSERT_TRUE(Exchange::runUntil([&] { return exchange.events() == "open bytes"; }));
  BQReadStreamUnscheduleFromRunLoop(exchange.stream(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  EXPECT_EQ(pass(), kBQRunLoopRunFinished);
  BQReadStreamScheduleWithRunLoop(exchange.stream(), BQRunLoopGetCurrent(), kOtherMode);
  exchange.readsBytes = true;
  EXPECT_TRUE(Exchange::runUntil([&] { return exchange.body() == "ab"; }, kOtherMode));
  rest.open();
  EXPECT_TRUE(Exchange::runUntil([&] { return exchange.isOver(); }, kOtherMode));
  EXPECT_EQ(exchange.body(), "abcd");
}

TEST(ReadStream, LeavesTheLoopEmptyWhenItIsOver) {
  for (const Script& script : {reply(okResponse("a")), replyAndClose("")}) {
    ScriptedPeer peer({script});
    Exchange over(peer.url()), closed(peer.url());
    over.run();
    EXPECT_EQ(pass(), kBQRunLoopRunFinished);
    ASSERT_TRUE(closed.open());
    BQReadStreamClose(closed.stream());
    EXPECT_EQ(pass(), kBQRunLoopRunFinished);
  }
}

TEST(ReadStream, WithoutAClientCanBePolled) {
  ScriptedPeer peer({reply(okResponse("polled"))});
  Exchange exchange(peer.url());
  BQReadStream* stream = exchange.stream();
  BQReadStreamScheduleWithRunLoop(stream, BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  ASSERT_TRUE(BQReadStreamOpen(stream));
  ASSERT_TRUE(Exchange::runUntil([&] { return BQReadStreamHasBytesAvailable(stream); }));
  pass();
  EXPECT_EQ(BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, true), kBQRunLoopRunTimedOut) << "reports to nobody";
  Exchange::runUntil([&] {
    exchange.readAll();
    return BQReadStreamGetStatus(stream) == kBQStreamStatusAtEnd;
  });
  EXPECT_EQ(exchange.body(), "polled");
}

TEST(ReadStream, ClientGetsOnlyTheEventsOfItsMask) {
  ScriptedPeer peer({reply(okResponse(""))});
  Exchange exchange(peer.url());
  ASSERT_TRUE(exchange.open());
  static std::vector<BQStreamEventType> events;
  events.clear();
  auto record = [](BQReadStream*, BQStreamEventType event, void*) { events.push_back(event); };
  ASSERT_TRUE(BQReadStreamSetClient(exchange.stream(), kBQStreamEventEndEncountered, record, nullptr));
  Exchange::runUntil([] { return !events.empty(); });
  EXPECT_EQ(events, std::vector<BQStreamEventType>{kBQStreamEventEndEncountered});
  EXPECT_EQ(exchange.events(), "");
}

TEST(ReadStream, ClientInfoIsRetainedAndReleasedOnce) {
  Exchange exchange("http://127.0.0.1/");
  static int references;
  references = 0;
  BQStreamClientContext context{};
  context.info = exchange.stream();
  context.retain = [](void* stream) {
    ++references;
    return stream;
  };
  context.release = [](void* info) {
    --references;
    auto* stream = static_cast<BQReadStream*>(info); /* perhaps being finalised */
    BQReadStreamUnscheduleFromRunLoop(stream, BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  };
  auto ignore = [](BQReadStream*, BQStreamEventType, void*) {};
  const struct {
    uint32_t events;
    BQReadStreamClientCallBack callBack;
    bool isTaken;
    int references;
  } table[] = {
      {kBQStreamEventEndEncountered, ignore, true, 1},
      {kBQStreamEventEndEncountered, ignore, true, 1},
      {32, ignore, false, 1},
      {kBQStreamEventEndEncountered, nullptr, true, 0},
      {kBQStreamEventEndEncountered, ignore, true, 1},
  };
  for (const auto& row : table) {
    EXPECT_EQ(BQReadStreamSetClient(exchange.stream(), row.events, row.callBack, &context), row.isTaken);
    EXPECT_EQ(references, row.references);
  }
  BQReadStreamScheduleWithRunLoop(exchange.stream(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  exchange.releaseStream();
  EXPECT_EQ(references, 0);
}

TEST(ReadStream, CanBeReleasedOrClosedInsideEveryEvent) {
  const BQStreamEventType kEvents[] = {kBQStreamEventOpenCompleted, kBQStreamEventHasBytesAvailable,
                                       kBQStreamEventEndEncountered, kBQStreamEventErrorOccurred};
  for (BQStreamEventType last : kEvents) {
    for (bool isReleased : {true, false}) {
      SCOPED_TRACE(std::to_string(last) + (isReleased ? " released" : " closed"));
      bool fails = last == kBQStreamEventErrorOccurred;
      ScriptedPeer peer({fails ? replyAndClose("") : reply(okResponse("a"))});
      Exchange exchange(peer.url());
      bool isDone = false;
      exchange.onEvent = [&](BQStreamEventType event) {
        EXPECT_FALSE(isDone) << "event " << event << " after the last";
        if (event != last) return;
        isDone = true;
        isReleased ? exchange.releaseStream() : BQReadStreamClose(exchange.stream());
      };
      ASSERT_TRUE(exchange.open());
      EXPECT_TRUE(Exchange::runUntil([&] { return isDone; }));
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
  EXPECT_TRUE(Exchange::runUntil([&] { return events > 0; }));
  while (pass() != kBQRunLoopRunFinished && events < 10) {
  }
  EXPECT_TRUE(first.events().empty() || second.events().empty());
}

TEST(ReadStream, EventCanRunTheLoopAgain) {
  ScriptedPeer peer({replyAndClose(okResponse("outer")), replyAndClose(okResponse("inner"))});
  Exchange outer(peer.url());
  std::string inner;
  outer.onEvent = [&](BQStreamEventType event) {
    if (event != kBQStreamEventOpenCompleted) return;
    Exchange nested(peer.url());
    ASSERT_TRUE(nested.open(kOtherMode));
    EXPECT_TRUE(Exchange::runUntil([&] { return nested.isOver(); }, kOtherMode));
    inner = nested.body();
  };
  outer.run();
  EXPECT_EQ(inner, "inner");
  EXPECT_EQ(outer.body(), "outer");
}

TEST(ReadStream, OpenRefusesWhatCannotWork) {
  ScriptedPeer peer({reply(okResponse("a"))});
  Exchange exchange(peer.url());
  ASSERT_TRUE(exchange.open());
  EXPECT_FALSE(BQReadStreamOpen(exchange.stream()));
  Exchange::runUntil([&] { return exchange.isOver(); });
  EXPECT_EQ(exchange.body(), "a");
  EXPECT_FALSE(BQReadStreamOpen(exchange.stream()));
  Exchange unscheduled(peer.url());
  EXPECT_FALSE(BQReadStreamOpen(unscheduled.stream()));
  EXPECT_EQ(unscheduled.error(), "posix " + std::to_string(EINVAL));
  auto response = own(BQHTTPMessageCreateResponse(BQSTR("HTTP/1.1 200 OK")));
  EXPECT_EQ(BQReadStreamCreateForHTTPRequest(response.get()), nullptr);
  EXPECT_EQ(BQReadStreamCreateForHTTPRequest(nullptr), nullptr);
  auto* wrong = reinterpret_cast<BQReadStream*>(response.get());
  EXPECT_FALSE(BQReadStreamOpen(wrong));
  EXPECT_EQ(BQReadStreamRead(wrong, nullptr, 0), -1);
}

TEST(ReadStream, PropertiesAreCheckedAndKept) {
  Exchange exchange("http://127.0.0.1/");
  BQReadStream* stream = exchange.stream();
  auto limit = integer(5);
  EXPECT_TRUE(BQReadStreamSetProperty(stream, kBQStreamPropertyHTTPMaximumReplySize, limit.get()));
  EXPECT_EQ(own(BQReadStreamCopyProperty(stream, kBQStreamPropertyHTTPMaximumReplySize)).get(), limit.get());
  EXPECT_TRUE(BQReadStreamSetProperty(stream, kBQStreamPropertyHTTPMaximumReplySize, nullptr));
  EXPECT_EQ(BQReadStreamCopyProperty(stream, kBQStreamPropertyHTTPMaximumReplySize), nullptr);
  EXPECT_FALSE(BQReadStreamSetProperty(stream, kBQStreamPropertyHTTPProxy, limit.get()));
  EXPECT_FALSE(BQReadStreamSetProperty(stream, kBQStreamPropertyHTTPResponseHeader, limit.get()));
  EXPECT_FALSE(BQReadStreamSetProperty(stream, BQSTR("unknown"), limit.get()));
  EXPECT_FALSE(BQReadStreamSetProperty(stream, nullptr, limit.get()));
  BQReadStreamOpen(stream);
  EXPECT_FALSE(BQReadStreamSetProperty(stream, kBQStreamPropertyHTTPMaximumReplySize, limit.get()));
}

TEST(ReadStream, StoppingWhileItWaitsClosesItsConnection) {
  ScriptedPeer peer({Script().expectRequest().waitForClose().send("too late"), reply(okResponse("next"))});
  Exchange waiting(peer.url());
  ASSERT_TRUE(waiting.open());
  waiting.releaseStream();
  EXPECT_EQ(Exchange(peer.url()).run().answer(), "next");
  EXPECT_EQ(waiting.events(), "");
}

TEST(ReadStream, OutlivesItsThread) {
  ScriptedPeer peer({Script().expectRequest().waitForClose()});
  Exchange exchange(peer.url());
  std::thread([&] { EXPECT_TRUE(exchange.open()); }).join();
  EXPECT_EQ(BQReadStreamGetStatus(exchange.stream()), kBQStreamStatusClosed);
  EXPECT_EQ(BQReadStreamRead(exchange.stream(), nullptr, 0), 0);
  EXPECT_EQ(exchange.events(), "");
}

TEST(ReadStream, ThreadsDoNotDisturbEachOther) {
  ScriptedPeer peer({replies(std::vector<std::string>(20, okResponse("a")))});
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int call = 0; call < 20; ++call) EXPECT_EQ(Exchange(peer.url()).run().answer(), "a");
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(peer.connectionCount(), 4u);
}

/* More than a thread connects at once, and none of them is read: the next must not wait for them. */
TEST(ReadStream, ThoseThatAreNotReadLeaveTheirRoomToOthers) {
  ScriptedPeer large({reply(okResponse(std::string(8'000'000, 'x')))});
  std::vector<std::unique_ptr<Exchange>> unread;
  for (int i = 0; i < 130; ++i) {
    unread.push_back(std::make_unique<Exchange>(large.url()));
    unread.back()->readsBytes = false;
    ASSERT_TRUE(unread.back()->open(BQSTR("unread")));
  }
  ScriptedPeer small({reply(okResponse("small"))});
  EXPECT_EQ(Exchange(small.url()).run().answer(), "small");
}

TEST(StreamError, DescriptionsArePlainSentences) {
  auto describe = [](BQStreamErrorDomain domain, int32_t error) {
    return text(own(BQStreamErrorCopyDescription({domain, error})));
  };
  EXPECT_EQ(describe(0, 0), "no error occurred");
  EXPECT_EQ(describe(kBQStreamErrorDomainPOSIX, ECONNREFUSED), "the connection was refused");
  EXPECT_EQ(describe(kBQStreamErrorDomainPOSIX, EMFILE), "Too many open files");
  EXPECT_EQ(describe(kBQStreamErrorDomainResolver, 1), "the name of the host could not be resolved");
  EXPECT_EQ(describe(kBQStreamErrorDomainTLS, 2), "the server's certificate could not be verified");
  EXPECT_EQ(describe(kBQStreamErrorDomainHTTP, 2), "the connection ended before the whole reply had arrived");
  EXPECT_EQ(describe(kBQStreamErrorDomainCustom, -65796), "an unknown error occurred");
  EXPECT_EQ(describe(77, 3), "an unknown error occurred");

  /* Each error has a sentence of its own. */
  const std::pair<BQStreamErrorDomain, std::vector<int32_t>> domains[] = {
      {kBQStreamErrorDomainPOSIX, {ECONNREFUSED, ECONNRESET, EPIPE, ETIMEDOUT, EHOSTUNREACH, ENETUNREACH}},
      {kBQStreamErrorDomainTLS, {1, 2, 3, 4, 99}},
      {kBQStreamErrorDomainHTTP, {1, 2, 3, 4, 5, 6, 7, kBQStreamHTTPErrorOther, 999}},
      {kBQStreamErrorDomainResolver, {1, 2}},
  };
  std::set<std::string> sentences;
  for (const auto& [domain, errors] : domains) {
    for (int32_t error : errors) EXPECT_TRUE(sentences.insert(describe(domain, error)).second) << error;
  }
}

}  // namespace
