#include <BQ/BQRunLoop.h>

#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <string>

#include "platform/runloop/Support.h"

namespace {

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
  runOnce();
  EXPECT_EQ(self.performed, 1);
  EXPECT_EQ(later.performed, 0);
  EXPECT_EQ(earlier.performed, 0);
  runOnce();
  EXPECT_EQ(self.performed, 2);
  EXPECT_EQ(later.performed, 1);
  EXPECT_EQ(earlier.performed, 1);
}

TEST(Source, SeveralSignalsBeforeAPerformCountAsOne) {
  Source source;
  source.signal();
  source.add();
  source.signal();
  source.signal();
  runOnce();
  runOnce();
  EXPECT_EQ(source.performed, 1) << "also the signal given before the source was added";
}

TEST(Source, SignalIsAnsweredOnceAcrossModes) {
  Source source;
  source.add().add(kOtherMode).signal();
  runOnce(kOtherMode);
  runOnce(kMode);
  EXPECT_EQ(source.performed, 1);
  source.signal();
  runOnce(kMode);
  runOnce(kOtherMode);
  EXPECT_EQ(source.performed, 2);
}

TEST(Source, NestedRunPerformsWhatTheOuterPassHasNotYet) {
  Source second({}, 1);
  int seenInside = -1;
  Source first([&] {
    BQRunLoopRunInMode(kMode, kNoLimit, true);
    seenInside = second.performed;
    second.signal();
  });
  first.add().signal();
  second.add().signal();
  runOnce();
  EXPECT_EQ(seenInside, 1);
  EXPECT_EQ(second.performed, 1) << "the signal given after the nested run belongs to the next pass";
  runOnce();
  EXPECT_EQ(second.performed, 2);
}

TEST(Source, HostileLifetimes) {
  const struct {
    const char* what;
    std::function<void(Source& self, Source& other)> act;
    int otherPerformed;
  } cases[] = {
      {"removes itself", [](Source& self, Source&) { self.remove(); }, 1},
      {"invalidates itself", [](Source& self, Source&) { BQRunLoopSourceInvalidate(self.get()); }, 1},
      {"removes and releases itself",
       [](Source& self, Source&) {
         self.remove();
         self.release();
       },
       1},
      {"removes the next", [](Source&, Source& other) { other.remove(); }, 0},
      {"invalidates the next", [](Source&, Source& other) { BQRunLoopSourceInvalidate(other.get()); }, 0},
      {"removes and releases the next",
       [](Source&, Source& other) {
         other.remove();
         other.release();
       },
       0},
      {"moves the next to another mode",
       [](Source&, Source& other) {
         other.remove();
         other.add(kOtherMode);
       },
       0},
      {"runs the loop, in which it is signalled again",
       [](Source& self, Source& other) {
         self.remove();
         self.add();
         if (self.performed == 1) self.signal();
         runOnce();
         other.remove();
       },
       1},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.what);
    Source other({}, 1);
    Source self([&] { test.act(self, other); });
    self.add().signal();
    other.add().signal();
    runOnce();
    EXPECT_GE(self.performed, 1);
    EXPECT_EQ(other.performed, test.otherPerformed);
    self.remove();
    other.remove();
    EXPECT_EQ(runOnce(), kBQRunLoopRunFinished);
  }
}

TEST(Source, AddingTwiceOrWhenInvalidHasNoEffect) {
  Source source;
  source.add().add();
  source.remove();
  EXPECT_EQ(runOnce(), kBQRunLoopRunFinished);
  BQRunLoopSourceInvalidate(source.get());
  EXPECT_FALSE(BQRunLoopSourceIsValid(source.get()));
  source.add();
  EXPECT_FALSE(BQRunLoopContainsSource(currentLoop(), source.get(), kMode));
}

/* Counts what the functions of a context are told. */
struct Recorder {
  std::string calls;
  BQRunLoop* loop = nullptr;

  static Recorder& of(const void* info) { return *static_cast<Recorder*>(const_cast<void*>(info)); }

  BQRunLoopSourceContext context() {
    BQRunLoopSourceContext context = {};
    context.info = this;
    context.retain = [](const void* info) {
      of(info).calls += "retain ";
      return info;
    };
    context.release = [](const void* info) { of(info).calls += "release "; };
    context.schedule = [](void* info, BQRunLoop* loop, const BQString* mode) {
      of(info).note("+", loop, mode);
    };
    context.cancel = [](void* info, BQRunLoop* loop, const BQString* mode) {
      of(info).note("-", loop, mode);
    };
    context.copyDescription = [](const void*) { return BQStringCreateCopy(BQSTR("recorder")); };
    return context;
  }
  void note(const char* what, BQRunLoop* where, const BQString* mode) {
    loop = where;
    calls += std::string(what) + (BQEqual(mode, kMode) ? "mode " : "other ");
  }
};

TEST(Source, ContextIsToldOfEveryChange) {
  Recorder recorder;
  const BQRunLoopSourceContext context = recorder.context();
  BQRunLoopSource* source = BQRunLoopSourceCreate(0, &context);
  BQRunLoopAddSource(currentLoop(), source, kMode);
  BQRunLoopAddSource(currentLoop(), source, kMode);
  BQRunLoopAddSource(currentLoop(), source, kOtherMode);
  EXPECT_EQ(recorder.loop, currentLoop());
  BQRunLoopRemoveSource(currentLoop(), source, kMode);
  BQRunLoopRemoveSource(currentLoop(), source, kMode);
  EXPECT_EQ(recorder.calls, "retain +mode +other -mode ");

  const auto description = bq::Ref<const BQString>::adopt(BQCopyDescription(source));
  EXPECT_TRUE(BQStringFind(description.get(), BQSTR("recorder"),
                           BQRangeMake(0, BQStringGetLength(description.get())), kBQCompareExact, nullptr));

  BQRunLoopSourceInvalidate(source);
  EXPECT_EQ(recorder.calls, "retain +mode +other -mode -other ");
  BQRelease(source);
  EXPECT_EQ(recorder.calls, "retain +mode +other -mode -other release ");
}

TEST(Source, InfoIsWhatRetainReturned) {
  static int retained = 0;
  BQRunLoopSourceContext context = {};
  context.retain = [](const void*) -> const void* { return &retained; };
  context.perform = [](void* info) { ++*static_cast<int*>(info); };
  const auto source = bq::Ref<BQRunLoopSource>::adopt(BQRunLoopSourceCreate(0, &context));
  BQRunLoopAddSource(currentLoop(), source.get(), kMode);
  BQRunLoopSourceSignal(source.get());
  runOnce();
  BQRunLoopSourceInvalidate(source.get());
  EXPECT_EQ(retained, 1);
}

TEST(Source, ModeHoldsItsReference) {
  Recorder recorder;
  const BQRunLoopSourceContext context = recorder.context();
  BQRunLoopSource* source = BQRunLoopSourceCreate(0, &context);
  BQRunLoopAddSource(currentLoop(), source, kMode);
  BQRelease(source);
  BQRunLoopRemoveSource(currentLoop(), source, kMode);
  EXPECT_EQ(recorder.calls, "retain +mode -mode release ");
}

TEST(Source, EqualityIsThatOfTheContext) {
  BQRunLoopSourceContext context = {};
  int values[] = {1, 1, 2};
  const auto make = [&context](void* info, BQIndex order = 0) {
    context.info = info;
    return bq::Ref<BQRunLoopSource>::adopt(BQRunLoopSourceCreate(order, &context));
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
  for (const Source& source : sources) performed += source.performed;
  EXPECT_EQ(performed, kCount + kCount / 2);
}

}  // namespace
