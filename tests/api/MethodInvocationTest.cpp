#include <VX/VX.h>
#include <gtest/gtest.h>

#include <string>

#include "api/CountingContext.h"
#include "support/Values.h"

namespace {

using namespace support;

class MethodInvocation : public testing::Test {
 protected:
  /* The parameters and their order as they read back. */
  std::string parameters() {
    const BQArray* order = reinterpret_cast<const BQArray*>(kBQNull);
    Value copy = Value::adopt(VXMethodInvocationCopyParameters(invocation_, &order));
    return notation(copy.get()) + " " + notation(Value::adopt(order).get());
  }

  Value handle_ =
      Value::adopt(VXMethodInvocationCreate(url("http://localhost/"), BQSTR("m"), kVXXMLRPCProtocol));
  VXMethodInvocationRef invocation_ = handle_.as<OpaqueVXMethodInvocationRef>();
};

TEST_F(MethodInvocation, ParametersReadBackWithTheirOrder) {
  Value values = dictionary({{"b", integer(1)}, {"a", integer(2)}});
  Value order = array({string("a"), string("missing")});
  EXPECT_EQ(parameters(), "- -") << "never set";
  VXMethodInvocationSetParameters(invocation_, values, nullptr);
  EXPECT_EQ(parameters(), "{b: 1, a: 2} ['b', 'a']") << "the keys are the order";
  Value copy = Value::adopt(VXMethodInvocationCopyParameters(invocation_, nullptr));
  BQDictionarySetValue(values.as<BQDictionary>(), BQSTR("a"), integer(3));
  EXPECT_EQ(notation(copy.get()), "{b: 1, a: 2}") << "a copy";
  VXMethodInvocationSetParameters(invocation_, values, order);
  EXPECT_EQ(parameters(), "{b: 1, a: 3} ['a', 'missing']") << "the objects given";
  VXMethodInvocationSetParameters(invocation_, dictionary({}), nullptr);
  EXPECT_EQ(parameters(), "{} []");
  VXMethodInvocationSetParameters(invocation_, nullptr, order);
  EXPECT_EQ(parameters(), "- ['a', 'missing']");
  VXMethodInvocationSetParameters(invocation_, nullptr, nullptr);
  EXPECT_EQ(parameters(), "- -");
}

TEST_F(MethodInvocation, TheCallbackContextIsReleasedWhenItIsReplaced) {
  CountingContext first, second;
  VXClientContext contexts[] = {first.context(), second.context()};
  auto ignore = [](VXMethodInvocationRef, void*, const BQDictionary*) {};
  VXMethodInvocationSetCallBack(invocation_, ignore, &contexts[0]);
  VXMethodInvocationSetCallBack(invocation_, ignore, &contexts[1]);
  EXPECT_EQ(first.released, 1);
  EXPECT_EQ(second.released, 0);
  VXMethodInvocationSetCallBack(invocation_, nullptr, nullptr);
  EXPECT_EQ(second.retained, 1);
  EXPECT_EQ(second.released, 1);
}

TEST_F(MethodInvocation, MayBeTakenOffARunLoopThatItNeverWasOn) {
  VXMethodInvocationUnscheduleFromRunLoop(invocation_, BQRunLoopGetCurrent(), BQSTR("mode"));
  EXPECT_EQ(BQRunLoopRunInMode(BQSTR("mode"), 0, false), kBQRunLoopRunFinished);
  VXMethodInvocationScheduleWithRunLoop(invocation_, BQRunLoopGetCurrent(), BQSTR("mode"));
  VXMethodInvocationUnscheduleFromRunLoop(invocation_, BQRunLoopGetCurrent(), BQSTR("mode"));
  EXPECT_EQ(BQRunLoopRunInMode(BQSTR("mode"), 0, false), kBQRunLoopRunFinished) << "never performed";
}

}  // namespace
