#include "transport/ClosureSource.h"

#include "Call.h"
#include "api/base/WebServiceMethodInvocation.h"

namespace vx {
namespace {

/* An invocation without a protocol or a transport. */
class TestInvocation : public WebServiceMethodInvocation {
 public:
  TestInvocation() {
    VXClientContext context = {0, this, nullptr, nullptr, nullptr};
    setCallback(receive, &context);
  }
  BQDictionary* copyAgreement() override { return nullptr; }
  const BQData* constructMessage(const BQString**) override { return nullptr; }
  void parseReply(WebServiceResult*, const BQTree*) override {}
  VXRunLoopSource* createRunLoopSource() override { return new ClosureSource(this); }

  std::vector<std::string>* failures = nullptr;

 private:
  static void receive(VXMethodInvocationRef, void* info, const BQDictionary* result) {
    auto* invocation = static_cast<TestInvocation*>(info);
    invocation->failures->push_back(failureOf(result));
    BQRelease(result);
  }
};

BQRunLoopRunResult run(VXRunLoopSource* source) {
  source->addToRunLoop(BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  source->signal();
  return BQRunLoopRunInMode(kBQRunLoopDefaultMode, 0, true);
}

TEST(Source, WithoutATransportDeliversOneFaultAndStrayPassesNone) {
  std::vector<std::string> failures;
  TestInvocation invocation;
  invocation.failures = &failures;
  for (int pass = 0; pass < 2; ++pass) {
    EXPECT_EQ(run(invocation.getSource()), kBQRunLoopRunHandledSource);
    EXPECT_TRUE(invocation.getSource()->isFinished());
    EXPECT_EQ(failures, std::vector<std::string>{"ClosureSource::perform not overridden 2 -65794"});
  }
}

}  // namespace
}  // namespace vx
