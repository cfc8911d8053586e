/*
 * Makes 100 calls at once on one run loop, without a thread:
 *
 *     example_concurrent_calls http://localhost:8080/RPC2
 *
 * prints how many answers came and what they add up to.
 */
#include <cstdio>

#include <vector>

#include <BQ/BQ.h>
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
  VXMethodInvocationRef invocation = nullptr;
  int answers = 0;
  Tally* tally = nullptr;
};

/* Called on this thread, from inside BQRunLoopRun, once per call. The result is ours to release. */
void receiveResult(VXMethodInvocationRef, void* info, const BQDictionary* result) {
  Call* call = static_cast<Call*>(info);
  Tally* tally = call->tally;
  int value = 0;
  if (VXMethodResultIsFault(result)) {
    ++tally->faults;
  } else {
    BQTypeRef number = BQDictionaryGetValue(result, kVXMethodInvocationResult);
    BQNumberGetValue(static_cast<const BQNumber*>(number), kBQNumberIntType, &value);
  }
  BQRelease(result);
  ++call->answers;
  tally->sum += value;
  if (++tally->answers == kCalls) BQRunLoopStop(BQRunLoopGetCurrent());
}

/* Prepares add(number, 1) and puts it on the run loop. Nothing is sent until the loop runs. */
void start(Call* call, const BQURL* url, int number) {
  int one = 1;
  BQTypeRef names[] = {BQSTR("a"), BQSTR("b")};
  BQTypeRef values[] = {BQNumberCreate(kBQNumberIntType, &number), BQNumberCreate(kBQNumberIntType, &one)};
  const BQDictionary* parameters = BQDictionaryCreate(names, values, 2);

  call->invocation = VXMethodInvocationCreate(url, BQSTR("add"), kVXXMLRPCProtocol);
  VXMethodInvocationSetParameters(call->invocation, parameters, nullptr);
  VXClientContext context = {0, call, nullptr, nullptr, nullptr};
  VXMethodInvocationSetCallBack(call->invocation, receiveResult, &context);
  VXMethodInvocationScheduleWithRunLoop(call->invocation, BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);

  BQRelease(parameters);
  BQRelease(values[0]);
  BQRelease(values[1]);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s URL\n", argv[0]);
    return 2;
  }
  const BQString* text = BQStringCreateWithCString(argv[1], kBQStringEncodingUTF8);
  const BQURL* url = BQURLCreateWithString(text, nullptr);
  BQRelease(text);
  if (url == nullptr) {
    std::fprintf(stderr, "%s is not a URL\n", argv[1]);
    return 2;
  }

  Tally tally;
  std::vector<Call> calls(kCalls);
  for (int i = 0; i < kCalls; ++i) {
    calls[i].tally = &tally;
    start(&calls[i], url, i);
  }
  BQRunLoopRun();

  /* An invocation must live until its callback was called; now each of them was. */
  bool eachOnce = true;
  for (Call& call : calls) {
    eachOnce = eachOnce && call.answers == 1;
    BQRelease(call.invocation);
  }
  BQRelease(url);
  std::printf("%d answers, %d faults, sum %ld\n", tally.answers, tally.faults, tally.sum);
  return eachOnce && tally.faults == 0 ? 0 : 1;
}
