/* vxcall: one call of an XML-RPC or SOAP server from the command line. */
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <optional>
#include <string>

#include <BQ/BQDictionary.h>
#include <VX/VXConstants.h>
#include <VX/VXMethodInvocation.h>

#include "Call.h"
#include "Failure.h"
#include "Invocation.h"
#include "Options.h"
#include "Output.h"
#include "RequestDocument.h"
#include "SavedInvocation.h"
#include "Secrets.h"
#include "StandardStreams.h"
#include "Trace.h"
#include "common/Terminal.h"
#include "common/UsageError.h"

namespace tools::vxcall {
namespace {

enum ExitStatus { kExitResult = 0, kExitFault = 1, kExitUsage = 2, kExitFailure = 3 };

void complain(const std::string& line) {
  tools::complain("vxcall", line);
}

ExitStatus complainOfWriting(const std::string& name) {
  complain("cannot write to " + name + ": " + std::strerror(errno));
  return kExitFailure;
}

ExitStatus print(const std::string& text, ExitStatus status) {
  return writeOutput(text) ? status : complainOfWriting("standard output");
}

ExitStatus save(const Invocation& invocation, const std::string& path) {
  if (writeFile(path, serializeInvocation(invocation))) return kExitResult;
  return complainOfWriting(path == "-" ? "standard output" : path);
}

ExitStatus printRequest(const Invocation& invocation) {
  std::optional<std::string> document = makeRequestDocument(invocation);
  if (!document) throw UsageError("no request document can be made of these parameters");
  return print(*document, kExitResult);
}

/* Makes the calls up to the first fault; the result is the last one's. */
Result performCalls(const Invocation& invocation, const Options& options) {
  Call call(invocation, options.async);
  Result result;
  for (long i = 0; i < options.repeat; ++i) {
    result = call.perform();
    if (options.verbose) {
      result = maskCapturedHeaders(result.get());
      std::fputs(escapeControls(traceOf(result.get(), invocation)).c_str(), stderr);
    }
    if (!result || VXMethodResultIsFault(result.get())) break;
  }
  return result;
}

ExitStatus reportFault(const BQDictionary* fault, const Invocation& invocation) {
  if (isTransportFailure(fault)) {
    complain(describeTransportFailure(fault, invocation));
    return kExitFailure;
  }
  complain(describeServerFault(fault));
  return kExitFault;
}

ExitStatus printValue(BQTypeRef value, const Options& options) {
  if (options.output == "json") return print(formatJson(value), kExitResult);
  std::optional<std::string> list = formatPropertyList(value);
  if (list) return print(*list, kExitResult);
  complain(describeUnlistable(value, {.name = "result"}) +
           ", for which a property list has no room; --output json does");
  return kExitFailure;
}

ExitStatus run(const Options& options) {
  Invocation invocation = makeInvocation(options);
  for (const std::string& note : invocation.notes) complain("note: " + note);
  if (options.save) return save(invocation, *options.save);
  if (options.printRequest) return printRequest(invocation);
  Result result = performCalls(invocation, options);
  if (!result) {
    complain("the call ended without a result");
    return kExitFailure;
  }
  bool isFault = VXMethodResultIsFault(result.get());
  if (!isFault && holdsNoAnswer(result.get(), invocation)) {
    complain(describeMissingAnswer(invocation));
    return kExitFailure;
  }
  ExitStatus status = isFault ? reportFault(result.get(), invocation) : kExitResult;
  if (options.output == "full") return print(formatJson(result.get()), status);
  return isFault ? status
                 : printValue(BQDictionaryGetValue(result.get(), kVXMethodInvocationResult), options);
}

}  // namespace
}  // namespace tools::vxcall

int main(int argc, char** argv) {
  tools::vxcall::occupyStandardStreams();
  try {
    tools::vxcall::CommandLine line = tools::vxcall::parseCommandLine(argc, argv);
    return line.options ? tools::vxcall::run(*line.options)
                        : tools::vxcall::print(line.answer, tools::vxcall::kExitResult);
  } catch (const tools::UsageError& error) {
    tools::vxcall::complain(error.what());
    return tools::vxcall::kExitUsage;
  }
}
