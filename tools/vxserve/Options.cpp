#include "Options.h"

#include <iostream>
#include <limits>
#include <memory>

#include <CLI/CLI.hpp>

#include "common/ParseComplaint.h"
#include "common/Spelling.h"
#include "common/UsageError.h"
#include "common/WholeNumber.h"

namespace tools::vxserve {
namespace {

constexpr const char* kDescription =
    "Serves methods for trying out XML-RPC and SOAP clients: XML-RPC on /RPC2, SOAP\n"
    "on /soap (XML Schema of 2001) and /soap-1999. Stops on SIGINT and SIGTERM.";

constexpr const char* kExamples = R"(Examples:
  vxserve --log &
  vxcall http://127.0.0.1:8080/RPC2 add 40 2
  vxcall http://127.0.0.1:8080/RPC2 system.listMethods
  vxcall -p soap-2001 -n urn:interop http://127.0.0.1:8080/soap add a=1 b=2
  vxserve --address 0.0.0.0 --port 0 --max-body 1000000 --deadline 5

Exit status: 0 stopped by a signal, 1 it cannot serve, 2 wrong usage.)";

class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App*, std::string name) const override {
    return "Usage: " + name + " [OPTIONS]\n";
  }
};

void addOptions(CLI::App& app, Options& options) {
  app.add_option("--address", options.address, "The address to listen on (default 127.0.0.1)")
      ->type_name("ADDRESS");
  app.add_option("--port", options.port, "The port; 0 takes a free one (default 8080)")
      ->check(wholeNumber<uint16_t>(0))
      ->type_name("PORT");
  app.add_option("--threads", options.threads, "The threads that serve (default: all processors)")
      ->check(wholeNumber(1U, 1024U))
      ->type_name("N");
  app.add_option("--max-body", options.maximumBody, "The largest body of a request (default 67108864)")
      ->check(wholeNumber(size_t{1}, std::numeric_limits<size_t>::max() / 2))
      ->type_name("BYTES");
  app.add_option("--deadline", options.deadlineSeconds, "The time per request and per reply (default 30)")
      ->check(wholeNumber(1U, 86400U))
      ->type_name("SECONDS");
  app.add_flag("--log", options.log, "Print a line for each request on standard error");
}

}  // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv) {
  Options options;
  CLI::App app(kDescription, "vxserve");
  app.formatter(std::make_shared<HelpFormatter>());
  app.footer(kExamples);
  app.set_version_flag("--version", "vxserve " VXSERVE_VERSION);
  app.set_help_flag("--help", "Show this help");
  app.allow_extras();
  addOptions(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& request) {
    app.exit(request, std::cout, std::cerr);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw UsageError(describeParseError(error, app) + "; vxserve --help lists the options");
  }
  if (!app.remaining().empty()) {
    std::string argument = app.remaining().front(), suggestion = suggestOption(argument, app);
    throw UsageError("there is no option " + nameInArgument(argument) +
                     (suggestion.empty() ? "; vxserve --help lists the options" : suggestion));
  }
  return options;
}

}  // namespace tools::vxserve
