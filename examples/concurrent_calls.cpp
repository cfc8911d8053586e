/*
 * Makes 100 calls at once on one run loop, without a thread:
 *
 *     example_concurrent_calls http://localhost:8080/RPC2
 *
 * prints how many answers came and what they add up to.
 */
#include <cstdio>

#include <vector>

#include <VX/VX.h>

namespace {

constexpr int kCalls = 100;

/* What all calls share. */
struct Tally {
  int answers = 0;
  int faults = 0;
  long sum = 0;
};

/* One call; its address goes with the callback. */
struct Call {
  BQRef<OpaqueVXMethodInvocationRef> invocation;
  int answers = 0;
  Tally* tally = nullptr;
};

/* Called on this thread, from inside BQRunLoopRun, once per call. The result is ours to release. */
void receiveResult(VXMethodInvocationRef, void* info, const BQDictionary* dictionary) {
  auto result = BQAdopt(dictionary);
  Call* call = static_cast<Call*>(info);
  Tally* tally = call->tally;
  int value = 0;
  if (VXMethodResultIsFault(result.get())) {
    ++tally->faults;
  } else {
    BQTypeRef number = BQDictionaryGetValue(result.get(), kVXMethodInvocationResult);
    BQNumberGetValue(static_cast<const BQNumber*>(number), kBQNumberIntType, &value);
  }
  ++call->answers;
  tally->sum += value;
  if (++tally->answers == kCalls) BQRunLoopStop(BQRunLoopGetCurrent());
}

/* Prepares add(number, 1) and puts it on the run loop. Nothing is sent until the loop runs. */
void start(Call* call, const BQURL* url, int number) {
  int one = 1;
  auto first = BQAdopt(BQNumberCreate(kBQNumberIntType, &number));
  auto second = BQAdopt(BQNumberCreate(kBQNumberIntType, &one));
  BQTypeRef names[] = {BQSTR("a"), BQSTR("b")}, values[] = {first.get(), second.get()};
  auto parameters = BQAdopt(BQDictionaryCreate(names, values, 2));

  call->invocation = BQAdopt(VXMethodInvocationCreate(url, BQSTR("add"), kVXXMLRPCProtocol));
  VXMethodInvocationRef invocation = call->invocation.get();
  VXMethodInvocationSetParameters(invocation, parameters.get(), nullptr);
  VXClientContext context = {0, call, nullptr, nullptr, nullptr};
  VXMethodInvocationSetCallBack(invocation, receiveResult, &context);
  VXMethodInvocationScheduleWithRunLoop(invocation, BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s URL\n", argv[0]);
    return 2;
  }
  auto text = BQAdopt(BQStringCreateWithCString(argv[1], kBQStringEncodingUTF8));
  auto url = BQAdopt(BQURLCreateWithString(text.get(), nullptr));
  if (!url) {
    std::fprintf(stderr, "%s is not a URL\n", argv[1]);
    return 2;
  }

  Tally tally;
  std::vector<Call> calls(kCalls);
  for (int i = 0; i < kCalls; ++i) {
    calls[i].tally = &tally;
    start(&calls[i], url.get(), i);
  }
  BQRunLoopRun();

  /* An invocation must live until its callback was called; now each of them was. */
  bool eachOnce = true;
  for (const Call& call : calls) eachOnce = eachOnce && call.answers == 1;
  std::printf("%d answers, %d faults, sum %ld\n", tally.answers, tally.faults, tally.sum);
  return eachOnce && tally.faults == 0 ? 0 : 1;
}
