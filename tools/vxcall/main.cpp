/* vxcall: one call of an XML-RPC or SOAP server from the command line. */
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <optional>
#include <string>

#include <BQ/BQDictionary.h>
#include <VX/VXConstants.h>
#include <VX/VXMethodInvocation.h>

#include "Call.h"
#include "Failure.h"
#include "Options.h"
#include "Output.h"
#include "RequestDocument.h"
#include "Trace.h"
#include "common/UsageError.h"

namespace tools::vxcall {
namespace {

enum ExitStatus { kExitResult = 0, kExitFault = 1, kExitUsage = 2, kExitFailure = 3 };

void complain(const std::string& line) {
  std::fprintf(stderr, "vxcall: %s\n", line.c_str());
}

ExitStatus print(const std::string& text, ExitStatus status) {
  if (writeOutput(text)) return status;
  complain(std::string("cannot write to standard output: ") + std::strerror(errno));
  return kExitFailure;
}

/* Makes the calls up to the first fault; the result is the last one's. */
Result performCalls(const Options& options) {
  Call call(options);
  Result result;
  for (long i = 0; i < options.repeat; ++i) {
    result = call.perform();
    if (options.verbose) std::fputs(traceOf(result.get()).c_str(), stderr);
    if (!result || VXMethodResultIsFault(result.get())) break;
  }
  return result;
}

ExitStatus reportFault(const BQDictionary* fault, const Options& options) {
  if (isTransportFailure(fault)) {
    complain(describeTransportFailure(fault, options));
    return kExitFailure;
  }
  complain(describeServerFault(fault));
  return kExitFault;
}

ExitStatus printValue(BQTypeRef value, const Options& options) {
  if (options.output == "json") return print(formatJson(value), kExitResult);
  std::optional<std::string> list = formatPropertyList(value);
  if (list) return print(*list, kExitResult);
  complain("the result holds a value that a property list cannot hold");
  return kExitFailure;
}

ExitStatus run(const Options& options) {
  if (options.printRequest) return print(makeRequestDocument(options), kExitResult);
  Result result = performCalls(options);
  if (!result) {
    complain("the call ended without a result");
    return kExitFailure;
  }
  bool isFault = VXMethodResultIsFault(result.get());
  ExitStatus status = isFault ? reportFault(result.get(), options) : kExitResult;
  if (options.output == "full") return print(formatJson(result.get()), status);
  return isFault ? status
                 : printValue(BQDictionaryGetValue(result.get(), kVXMethodInvocationResult), options);
}

}  // namespace
}  // namespace tools::vxcall

int main(int argc, char** argv) {
  /* A reader that is gone shows as a failed write, which gets a message. */
  std::signal(SIGPIPE, SIG_IGN);
  try {
    std::optional<tools::vxcall::Options> options = tools::vxcall::parseOptions(argc, argv);
    return options ? tools::vxcall::run(*options) : tools::vxcall::kExitResult;
  } catch (const tools::UsageError& error) {
    tools::vxcall::complain(error.what());
    return tools::vxcall::kExitUsage;
  }
}
