/*
 * A long run of calls of every kind to a server that answers them well and badly, with the memory and
 * the descriptors of both processes sampled. Fails if a call does not end as it should, or if either
 * process still grows after the first fifth of the run.
 *
 * usage: soak [CALLS]
 */
#include <VX/VX.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "soak/SoakServer.h"
#include "support/Constants.h"
#include "support/Values.h"

namespace soak {
namespace {

using support::kProtocols;
using support::Value;

constexpr int kBatch = 8;

/* What becomes of a call: its value comes back, it ends with the server's fault, or with ours. */
enum class Outcome { kValue, kFault, kTransport };

/* Mostly calls that go well, with every failure in between. */
const struct {
  const char* method;
  Outcome outcome;
} kMethods[] = {
    {"echo", Outcome::kValue},       {"fault", Outcome::kFault},     {"echo", Outcome::kValue},
    {"chunked", Outcome::kValue},    {"cut", Outcome::kTransport},   {"echo", Outcome::kValue},
    {"reset", Outcome::kTransport},  {"close", Outcome::kValue},     {"echo", Outcome::kValue},
    {"silent", Outcome::kTransport}, {"echo", Outcome::kValue},      {"garbage", Outcome::kTransport},
    {"status", Outcome::kTransport}, {"image", Outcome::kTransport}, {"echo", Outcome::kValue},
    {"broken", Outcome::kTransport}, {"fault", Outcome::kFault},
};

Value makeValue(size_t number) {
  Value text = support::string("call " + std::to_string(number) + " <&> é");
  return support::dictionary({{"text", text},
                              {"list", support::array({support::integer(static_cast<int>(number)), text})},
                              {"real", support::real(2.5)},
                              {"flag", Value::retain(kBQBooleanTrue)},
                              {"date", support::date(static_cast<double>(number))},
                              {"data", support::blob(std::string(number % 3000 + 1, '\xA5'))}});
}

class Call {
 public:
  Call(const SoakServer& server, size_t number)
      : number_(number), value_(makeValue(number)), kind_(kMethods[number % std::size(kMethods)]) {
    size_t protocol = number / 7 % 3;
    handle_ = Value::adopt(VXMethodInvocationCreate(support::url(server.url(protocol)),
                                                    support::string(kind_.method), kProtocols[protocol]));
    VXMethodInvocationSetParameters(invocation(), support::dictionary({{"p1", value_}}), nullptr);
    VXMethodInvocationSetProperty(invocation(), kVXMethodInvocationResultParameterName, BQSTR("Result"));
    VXMethodInvocationSetProperty(invocation(), kVXMethodInvocationTimeoutValue, support::integer(60));
    if (number % 11 == 0) VXMethodInvocationSetProperty(invocation(), kVXDebugIncomingBody, kBQBooleanTrue);
    if (number % 13 == 0) passThroughSerialization();
  }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  void invoke() { take(VXMethodInvocationInvoke(invocation())); }

  void schedule() {
    VXClientContext context = {0, this, nullptr, nullptr, nullptr};
    auto receive = [](VXMethodInvocationRef, void* info, const BQDictionary* result) {
      static_cast<Call*>(info)->take(result);
    };
    VXMethodInvocationSetCallBack(invocation(), receive, &context);
    VXMethodInvocationScheduleWithRunLoop(invocation(), BQRunLoopGetCurrent(), kBQRunLoopDefaultMode);
  }

  bool isOver() const { return results_ > 0; }

  /* Whether it ended once, as it should. */
  bool isRight() const {
    if (results_ != 1) return false;
    bool isFault = VXMethodResultIsFault(result_);
    if (kind_.outcome == Outcome::kValue) {
      return !isFault && BQEqual(BQDictionaryGetValue(result_, kVXMethodInvocationResult), value_);
    }
    bool isOurs = BQEqual(BQDictionaryGetValue(result_, kVXFaultString), kVXNetworkStreamFaultString);
    return isFault && isOurs == (kind_.outcome == Outcome::kTransport);
  }

  std::string report() const {
    return std::to_string(number_) + " (" + kind_.method + "): " + std::to_string(results_) + " results, " +
           support::text(result_.get());
  }

 private:
  VXMethodInvocationRef invocation() const { return handle_.as<OpaqueVXMethodInvocationRef>(); }

  void take(const BQDictionary* result) {
    ++results_;
    result_ = Value::adopt(result);
  }

  void passThroughSerialization() {
    Value bytes = Value::adopt(VXMethodInvocationCopySerialization(invocation()));
    handle_ = Value::adopt(VXMethodInvocationCreateFromSerialization(bytes));
  }

  size_t number_;
  Value value_;
  decltype(kMethods[0]) kind_;
  Value handle_;
  Value result_;
  int results_ = 0;
};

/* Half of the calls one after the other, half of them eight at a time. */
bool runCalls(const SoakServer& server, size_t first) {
  std::vector<std::unique_ptr<Call>> calls;
  for (size_t i = 0; i < kBatch; ++i) calls.push_back(std::make_unique<Call>(server, first + i));
  for (auto& call : calls) first / kBatch % 2 == 0 ? call->invoke() : call->schedule();
  bool isRight = true;
  for (auto& call : calls) {
    while (!call->isOver()) BQRunLoopRunInMode(kBQRunLoopDefaultMode, 1, true);
    if (call->isRight()) continue;
    std::printf("wrong: call %s\n", call->report().c_str());
    isRight = false;
  }
  return isRight;
}

struct Usage {
  long kibibytes = 0;
  long descriptors = 0;
};

Usage usageOf(pid_t process) {
  std::filesystem::path folder = "/proc/" + std::to_string(process);
  Usage usage;
  std::ifstream status(folder / "status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) usage.kibibytes = std::strtol(line.c_str() + 6, nullptr, 10);
  }
  for (auto entry = std::filesystem::directory_iterator(folder / "fd");
       entry != std::filesystem::directory_iterator(); ++entry) {
    ++usage.descriptors;
  }
  return usage;
}

Usage most(const std::vector<Usage>& samples, size_t from, size_t to) {
  Usage result;
  for (size_t i = from; i < to; ++i) {
    result.kibibytes = std::max(result.kibibytes, samples[i].kibibytes);
    result.descriptors = std::max(result.descriptors, samples[i].descriptors);
  }
  return result;
}

/* Compares the second fifth of the run with the last. */
bool isFlat(const char* name, const std::vector<Usage>& samples) {
  constexpr long kSlack = 256; /* KiB, for what the allocator does not give back */
  size_t fifth = samples.size() / 5;
  Usage early = most(samples, fifth, 2 * fifth), late = most(samples, samples.size() - fifth, samples.size());
  bool isFlat = late.kibibytes <= early.kibibytes + kSlack && late.descriptors <= early.descriptors + kBatch;
  std::printf("%-7s memory %ld KiB early, %ld KiB late; descriptors %ld early, %ld late: %s\n", name,
              early.kibibytes, late.kibibytes, early.descriptors, late.descriptors,
              isFlat ? "flat" : "GROWING");
  return isFlat;
}

int run(size_t calls) {
  constexpr size_t kSamples = 200;
  SoakServer server;
  std::vector<Usage> ours, theirs;
  size_t done = 0;
  for (; done < calls; done += kBatch) {
    if (!runCalls(server, done)) return 1;
    if (done * kSamples / calls >= ours.size()) {
      ours.push_back(usageOf(getpid()));
      theirs.push_back(usageOf(server.process()));
    }
  }
  std::printf("%zu calls, each ended as it should\n", done);
  bool oursFlat = isFlat("client", ours), theirsFlat = isFlat("server", theirs);
  return oursFlat && theirsFlat ? 0 : 1;
}

}  // namespace
}  // namespace soak

int main(int count, char** arguments) {
  long calls = count > 1 ? std::strtol(arguments[1], nullptr, 10) : 200'000;
  if (count > 2 || calls < 1) {
    std::fputs("usage: soak [CALLS]\n", stderr);
    return 2;
  }
  return soak::run(static_cast<size_t>(calls));
}
