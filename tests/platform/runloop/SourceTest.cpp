#include <gtest/gtest.h>

#include <deque>
#include <string>

#include "platform/runloop/Support.h"

namespace {

using namespace values;

TEST(Source, PerformedByOrderThenBySignal) {
  std::string order;
  Source late([&] { order += 'L'; }, 5);
  Source first([&] { order += '1'; });
  Source second([&] { order += '2'; });
  Source early([&] { order += 'E'; }, -5);
  for (Source* source : {&late, &second, &first, &early}) source->add();
  for (Source* source : {&late, &first, &second, &early}) source->signal();
  runOnce();
  EXPECT_EQ(order, "E12L");
}

TEST(Source, SignalsWithinAPassWaitForTheNextOne) {
  Source self([&self] { self.signal(); });
  Source later({}, 2);
  Source earlier({}, -1);
  Source signaller([&] {
    later.signal();
    earlier.signal();
  });
  for (Source* source : {&self, &later, &earlier, &signaller}) source->add();
  self.signal();
  signaller.signal();
  for (int pass = 1; pass <= 2; ++pass) {
    runOnce();
    EXPECT_EQ(self.calls, pass);
    EXPECT_EQ(later.calls, pass - 1);
    EXPECT_EQ(earlier.calls, pass - 1);
  }
}

TEST(Source, SignalsBeforeAPerformCountAsOneInWhateverMode) {
  Source source;
  source.signal(); /* also before it is added */
  source.add().add(kOtherMode).signal();
  runOnce(kOtherMode);
  runOnce(kMode);
  EXPECT_EQ(source.calls, 1);
  source.signal();
  source.signal();
  runOnce(kMode);
  runOnce(kOtherMode);
  EXPECT_EQ(source.calls, 2);
}

TEST(Source, NestedRunPerformsWhatTheOuterPassHasNotYet) {
  Source second({}, 1);
  Source first([&] {
    if (first.calls > 1) return;
    first.remove();
    first.add().signal();
    runOnce();
    EXPECT_EQ(first.calls, 2);
    EXPECT_EQ(second.calls, 1);
    second.signal();
  });
  first.add().signal();
  second.add().signal();
  runOnce();
  EXPECT_EQ(second.calls, 1) << "the signal given after the nested run belongs to the next pass";
  runOnce();
  EXPECT_EQ(second.calls, 2);
  EXPECT_EQ(first.calls, 2);
}

/* Counts what the functions of a context are told. */
struct Recorder {
  std::string calls;

  static Recorder& of(const void* info) { return *static_cast<Recorder*>(const_cast<void*>(info)); }

  void note(const char* what, BQRunLoop* loop, const BQString* mode) {
    EXPECT_EQ(loop, currentLoop());
    calls += what + text(mode) + ", ";
  }
};

TEST(Source, ContextIsToldOfEveryChange) {
  Recorder recorder;
  BQRunLoopSourceContext context = {};
  context.info = &recorder;
  context.retain = [](const void* info) {
    Recorder::of(info).calls += "retain, ";
    return info;
  };
  context.release = [](const void* info) { Recorder::of(info).calls += "release, "; };
  context.schedule = [](void* info, BQRunLoop* loop, const BQString* mode) {
    Recorder::of(info).note("+", loop, mode);
  };
  context.cancel = [](void* info, BQRunLoop* loop, const BQString* mode) {
    Recorder::of(info).note("-", loop, mode);
  };
  context.copyDescription = [](const void*) { return BQStringCreateCopy(BQSTR("recorder")); };
  BQRunLoopSource* source = BQRunLoopSourceCreate(0, &context);
  for (const BQString* mode : {kMode, kMode, kOtherMode}) BQRunLoopAddSource(currentLoop(), source, mode);
  BQRelease(source); /* the modes hold it */
  for (int count = 0; count < 2; ++count) BQRunLoopRemoveSource(currentLoop(), source, kMode);
  EXPECT_NE(describe(source).find("recorder"), std::string::npos);
  EXPECT_EQ(recorder.calls, "retain, +a mode, +another mode, -a mode, ");
  BQRunLoopSourceInvalidate(source);
  EXPECT_EQ(recorder.calls, "retain, +a mode, +another mode, -a mode, -another mode, release, ");
}

TEST(Source, CannotBeAddedWhenItIsInvalid) {
  Source source;
  source.add().invalidate();
  EXPECT_EQ(runOnce(), kBQRunLoopRunFinished);
  EXPECT_FALSE(BQRunLoopSourceIsValid(source.get()));
  source.add();
  EXPECT_FALSE(BQRunLoopContainsSource(currentLoop(), source.get(), kMode));
}

TEST(Source, InfoIsWhatRetainReturned) {
  static int performed = 0;
  BQRunLoopSourceContext context = {};
  context.retain = [](const void*) -> const void* { return &performed; };
  context.perform = [](void* info) { ++*static_cast<int*>(info); };
  const auto source = own(BQRunLoopSourceCreate(0, &context));
  BQRunLoopAddSource(currentLoop(), source.get(), kMode);
  BQRunLoopSourceSignal(source.get());
  runOnce();
  BQRunLoopSourceInvalidate(source.get());
  EXPECT_EQ(performed, 1);
}

TEST(Source, EqualityIsThatOfTheContext) {
  BQRunLoopSourceContext context = {};
  int values[] = {1, 1, 2};
  const auto make = [&context](void* info, BQIndex order = 0) {
    context.info = info;
    return own(BQRunLoopSourceCreate(order, &context));
  };
  EXPECT_FALSE(BQEqual(make(nullptr).get(), make(nullptr).get())) << "without a function, by identity";
  context.equal = [](const void* first, const void* second) {
    return *static_cast<const int*>(first) == *static_cast<const int*>(second);
  };
  EXPECT_TRUE(BQEqual(make(&values[0]).get(), make(&values[1]).get()));
  EXPECT_EQ(BQHash(make(&values[0]).get()), BQHash(make(&values[1]).get()));
  EXPECT_FALSE(BQEqual(make(&values[0]).get(), make(&values[2]).get()));
  EXPECT_FALSE(BQEqual(make(&values[0]).get(), make(&values[1], 1).get()));
}

TEST(Source, TenThousandSignalledAndRemoved) {
  constexpr int kCount = 10'000;
  std::deque<Source> sources;
  for (int index = 0; index < kCount; ++index) sources.emplace_back(std::function<void()>(), -index).add();
  for (Source& source : sources) source.signal();
  runOnce();
  for (int index = 0; index < kCount; index += 2) {
    sources[index].signal();
    sources[index].remove();
  }
  for (Source& source : sources) source.signal();
  runOnce();
  int performed = 0;
  for (const Source& source : sources) performed += source.calls;
  EXPECT_EQ(performed, kCount + kCount / 2);
}

}  // namespace
