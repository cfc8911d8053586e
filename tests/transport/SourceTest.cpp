#include "transport/ClosureSource.h"

#include <gtest/gtest.h>

#include "Call.h"
#include "api/base/WebServiceMethodInvocation.h"

namespace vx {
namespace {

/* An invocation without a protocol, whose source is what a test makes it. */
class TestInvocation : public WebServiceMethodInvocation {
 public:
  BQDictionary* copyAgreement() override { return nullptr; }
  const BQData* constructMessage(const BQString**) override { return nullptr; }
  void parseReply(WebServiceResult*, const BQTree*) override {}
  VXRunLoopSource* createRunLoopSource() override {
    ++sourcesMade;
    return new ClosureSource(this);
  }

  int sourcesMade = 0;
};

struct Delivery {
  int count = 0;
  std::string failure;
  TestInvocation* destroyed = nullptr;
};

void receive(VXMethodInvocationRef, void* info, const BQDictionary* result) {
  auto* delivery = static_cast<Delivery*>(info);
  ++delivery->count;
  delivery->failure = failureOf(result);
  BQRelease(result);
  delete delivery->destroyed;
}

void schedule(VXRunLoopSource* source) {
  source->addToRunLoop(BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  source->signal();
}

class SourceTest : public testing::Test {
 protected:
  SourceTest() {
    VXClientContext context = {0, &delivery, nullptr, nullptr, nullptr};
    invocation->setCallback(receive, &context);
  }

  static BQRunLoopRunResult runOnce() { return BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, true); }

  Delivery delivery;
  std::unique_ptr<TestInvocation> invocation = std::make_unique<TestInvocation>();
};

TEST_F(SourceTest, RemovalOfOneNeverAddedMakesNoPlatformSource) {
  VXRunLoopSource* source = invocation->getSource();
  EXPECT_TRUE(source->removeFromRunLoop(BQRunLoopGetCurrent(), kBQRunLoopDefaultMode));
  EXPECT_EQ(source->platformSource(), nullptr);
}

TEST_F(SourceTest, WithoutATransportDeliversOneFault) {
  schedule(invocation->getSource());
  EXPECT_EQ(runOnce(), kBQRunLoopRunHandledSource);
  EXPECT_EQ(delivery.count, 1);
  EXPECT_EQ(delivery.failure, "ClosureSource::perform not overridden 2 -65794");
}

TEST_F(SourceTest, StrayPerformAfterTheResultIsIgnored) {
  VXRunLoopSource* source = invocation->getSource();
  schedule(source);
  runOnce();
  EXPECT_TRUE(source->isFinished());
  source->signal();
  runOnce();
  EXPECT_EQ(delivery.count, 1);
}

TEST_F(SourceTest, AfterAResultTheNextCallGetsAFreshSource) {
  schedule(invocation->getSourceForCall());
  EXPECT_EQ(invocation->getSourceForCall(), invocation->getSource());
  runOnce();
  schedule(invocation->getSourceForCall());
  runOnce();
  EXPECT_EQ(delivery.count, 2);
  EXPECT_EQ(invocation->sourcesMade, 2);
}

TEST_F(SourceTest, InvocationMayBeDestroyedInItsCallback) {
  delivery.destroyed = invocation.get();
  schedule(invocation.release()->getSource());
  EXPECT_EQ(runOnce(), kBQRunLoopRunHandledSource);
  EXPECT_EQ(delivery.count, 1);
  EXPECT_EQ(runOnce(), kBQRunLoopRunFinished) << "the loop still holds the source";
}

TEST_F(SourceTest, DestroyedWhileSignalledIsNotPerformed) {
  schedule(invocation->getSource());
  invocation.reset();
  EXPECT_EQ(runOnce(), kBQRunLoopRunFinished);
  EXPECT_EQ(delivery.count, 0);
}

}  // namespace
}  // namespace vx
