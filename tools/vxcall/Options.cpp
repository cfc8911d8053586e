#include "Options.h"

#include <cctype>
#include <iostream>
#include <limits>
#include <memory>

#include <CLI/CLI.hpp>

#include "common/Text.h"
#include "common/UsageError.h"

namespace tools::vxcall {
namespace {

constexpr const char* kDescription = "Calls a method of an XML-RPC or SOAP server and prints the result.";

constexpr const char* kParameterHelp =
    R"(PARAM is [NAME=][TYPE:]VALUE. TYPE is one of
  int       a whole number of 32 bits
  double    a number
  bool      true, false, 1 or 0
  string    the text as it stands
  date      YYYY-MM-DD[Thh:mm:ss[Z or +hh:mm]]; UTC unless it says otherwise
  base64    bytes, written in base64
  file      the bytes of the file of that name
  nil       no value; nothing follows the colon
  json      a JSON value; arrays and objects keep their order
Without TYPE the value is an int, a double, or true or false if it reads as one, else a
string. Without NAME the parameters are named p1, p2 and so on by their place.

Exit status: 0 for a result, 1 if the server answered with a fault, 2 for wrong usage, 3 if
the call failed on the way, timed out or got an unusable reply.)";

/* The usage line of CLI11 does not know of the parameters, which it does not parse. */
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App*, std::string name) const override {
    return "Usage: " + name + " [OPTIONS] URL METHOD [PARAM...]\n";
  }
};

/* Checks without the text that they would add to the help, which names the values by itself. */
CLI::Validator oneOf(std::vector<std::string> values) {
  return CLI::IsMember(std::move(values)).description("");
}
template <typename Number>
CLI::Validator atLeast(Number least) {
  return CLI::Range(least, std::numeric_limits<Number>::max()).description("");
}

void addCallOptions(CLI::App& app, Options& options) {
  app.add_option("URL", options.url, "The endpoint, http or https")->required()->type_name("");
  app.add_option("METHOD", options.method, "The method to call")->required()->type_name("");
  app.add_option("-p,--protocol", options.protocol, "The protocol (default xml-rpc)")
      ->check(oneOf({"xml-rpc", "soap-1999", "soap-2001"}))
      ->type_name("xml-rpc|soap-1999|soap-2001");
  app.add_flag("--async", options.async, "Schedule the call on a run loop instead of waiting for it");
  app.add_option("--repeat", options.repeat, "Make N calls one after the other; the last result is printed")
      ->check(atLeast(1L))
      ->type_name("N");
}

void addSOAPOptions(CLI::App& app, Options& options) {
  app.add_option("-n,--namespace", options.methodNamespace, "The namespace of the method (SOAP)")
      ->type_name("URI");
  app.add_option("--style", options.style, "The form of the body (SOAP)")
      ->check(oneOf({"rpc", "doc"}))
      ->type_name("rpc|doc");
  app.add_option("--result", options.resultName, "The reply element that holds the result (SOAP)")
      ->type_name("NAME");
  app.add_option("--soap-header", options.soapHeaders, "A header element to send (SOAP); may be repeated")
      ->allow_extra_args(false)
      ->type_name("XML");
}

void addHTTPOptions(CLI::App& app, Options& options) {
  app.add_option("-H,--header", options.headers, "A further HTTP header, 'NAME: VALUE'; may be repeated")
      ->allow_extra_args(false)
      ->type_name("HEADER");
  app.add_option("-t,--timeout", options.timeoutSeconds,
                 "The most seconds that a call may take (default 0: any)")
      ->check(atLeast(0))
      ->type_name("SECONDS");
  app.add_option("--proxy", options.proxy, "The HTTP proxy")->type_name("URL");
  app.add_flag_callback(
      "--no-redirect", [&options] { options.followsRedirects = false; }, "Do not follow redirects");
  app.add_option("--http", options.httpVersion, "The version of HTTP (default 1.1)")
      ->check(oneOf({"1.0", "1.1"}))
      ->type_name("1.0|1.1");
}

void addOutputOptions(CLI::App& app, Options& options) {
  app.add_option("-o,--output", options.output,
                 "Print the value as JSON (the default) or as a property list, or all of the result")
      ->check(oneOf({"json", "plist", "full"}))
      ->type_name("json|plist|full");
  app.add_flag("-v,--verbose", options.verbose, "Show headers and bodies on standard error");
  app.add_flag("--print-request", options.printRequest, "Print the request document and send nothing");
}

UsageError noOption(const std::string& argument) {
  return UsageError("there is no option " + argument + "; a value like that is written string:" + argument);
}

/*
 * The parameters are what the parser leaves over, rather than an option of its own, because it
 * would take the values of a list apart at brackets and commas.
 */
std::vector<std::string> takeParameters(const std::vector<std::string>& remaining) {
  std::vector<std::string> parameters;
  bool optionsEnded = false;
  for (const std::string& argument : remaining) {
    if (optionsEnded) {
      parameters.push_back(argument);
    } else if (argument == "--") {
      optionsEnded = true;
    } else if (argument.size() > 1 && argument[0] == '-' && argument[1] != '.' &&
               !std::isdigit(static_cast<unsigned char>(argument[1]))) {
      throw noOption(argument);
    } else {
      parameters.push_back(argument);
    }
  }
  return parameters;
}

}  // namespace

std::optional<Options> parseOptions(int argc, const char* const* argv) {
  Options options;
  CLI::App app(kDescription, "vxcall");
  app.formatter(std::make_shared<HelpFormatter>());
  app.footer(kParameterHelp);
  app.set_version_flag("--version", "vxcall " VXCALL_VERSION);
  app.set_help_flag("--help", "Show this help");
  app.allow_extras();
  addCallOptions(app, options);
  addSOAPOptions(app, options);
  addHTTPOptions(app, options);
  addOutputOptions(app, options);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& request) {
    app.exit(request, std::cout, std::cerr);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    throw UsageError(singleLine(error.what()));
  }
  options.parameters = takeParameters(app.remaining());
  return options;
}

}  // namespace tools::vxcall
