#include "Options.h"

#include <cctype>

#include <algorithm>
#include <limits>
#include <memory>
#include <string_view>
#include <utility>

#include <CLI/CLI.hpp>

#include "Help.h"
#include "common/ParseComplaint.h"
#include "common/Spelling.h"
#include "common/Text.h"
#include "common/UsageError.h"
#include "common/WholeNumber.h"

namespace tools::vxcall {
namespace {

/* A check without the text that it would add to the help, which names the values by itself. */
CLI::Validator oneOf(std::vector<std::string_view> values) {
  auto check = [values = std::move(values)](const std::string& text) {
    if (std::find(values.begin(), values.end(), text) != values.end()) return std::string();
    std::string complaint = "'" + maskURL(text, true) + "' is none of ";
    for (std::string_view value : values) complaint.append(value).append(value == values.back() ? "" : ", ");
    return complaint + suggestionFor(text, values);
  };
  return CLI::Validator(check, "");
}

void addCallOptions(CLI::App& app, Options& options) {
  app.add_option("URL", options.url);
  app.add_option("METHOD", options.method);
  app.add_option("-p,--protocol", options.protocol, "xml-rpc (the default), soap-1999 or soap-2001")
      ->check(oneOf({"xml-rpc", "soap-1999", "soap-2001"}))
      ->type_name("NAME");
  app.add_option("-t,--timeout", options.timeoutSeconds, "end the call after so long; 0 is no limit")
      ->check(wholeNumber(0))
      ->type_name("SECONDS");
  app.add_flag("--async", options.async, "schedule the call instead of waiting in it");
  app.add_option("--repeat", options.repeat, "make N calls; print the last result")
      ->check(wholeNumber(1L))
      ->type_name("N");
}

void addSOAPOptions(CLI::App& app, Options& options) {
  app.add_option("-n,--namespace", options.methodNamespace, "SOAP: the namespace of the method")
      ->type_name("URI");
  app.add_option("--style", options.style, "SOAP: the form of the body, rpc or doc")
      ->check(oneOf({"rpc", "doc"}))
      ->type_name("FORM");
  app.add_option("--result", options.resultName, "SOAP: the element of the reply to print")
      ->type_name("NAME");
  app.add_option("--soap-header", options.soapHeaders, "SOAP: send a header element (repeatable)")
      ->allow_extra_args(false)
      ->type_name("XML");
}

void addHTTPOptions(CLI::App& app, Options& options) {
  app.add_option("-H,--header", options.headers, "send an HTTP header, 'NAME: VALUE' (repeatable)")
      ->allow_extra_args(false)
      ->type_name("HEADER");
  app.add_option("--http", options.httpVersion, "the version of HTTP, 1.0 or 1.1 (the default)")
      ->check(oneOf({"1.0", "1.1"}))
      ->type_name("VERSION");
  app.add_option("--proxy", options.proxy, "go through an HTTP proxy")->type_name("URL");
  app.add_flag("--no-redirect", options.refusesRedirects, "do not follow redirects");
  app.add_option("--ca", options.certificateAuthority, "trust the certificates of a PEM file alone")
      ->type_name("FILE");
  app.add_option("--max-reply", options.replyLimit, "refuse a larger reply (default 1 GiB)")
      ->check(wholeNumber<int64_t>(1))
      ->type_name("BYTES");
}

void addOutputOptions(CLI::App& app, Options& options) {
  app.add_option("-o,--output", options.output, "json, plist, or full: all of the result, as JSON")
      ->check(oneOf({"json", "plist", "full"}))
      ->type_name("FORM");
  app.add_flag("-v,--verbose", options.verbose, "show request and reply on standard error");
  app.add_flag("--print-request", options.printRequest, "print the request document; send nothing");
  app.add_option("--save", options.save, "write the call to a file; send nothing")->type_name("FILE");
  app.add_option("--load", options.load, "make a saved call; further options change it")->type_name("FILE");
}

/* What cannot have an effect beside another option is an oversight, which silence would hide. */
void excludeContradictions(CLI::App& app) {
  CLI::Option* save = app.get_option("--save");
  CLI::Option* printRequest = app.get_option("--print-request");
  save->excludes(printRequest);
  for (const char* name : {"--async", "--repeat", "--output", "--verbose"}) {
    save->excludes(name);
    printRequest->excludes(name);
  }
  app.get_option("--load")->excludes("--protocol");
}

UsageError noOption(const std::string& argument, const CLI::App& app) {
  std::string shown = nameInArgument(argument), suggestion = suggestOption(argument, app);
  std::string help = "; vxcall --help shows the options (a value like that is written string:" + shown + ")";
  return UsageError("there is no option " + shown + (suggestion.empty() ? help : suggestion));
}

/*
 * The parameters are what the parser leaves over, rather than an option of its own, because it
 * would take the values of a list apart at brackets and commas.
 */
std::vector<std::string> takeParameters(const CLI::App& app) {
  std::vector<std::string> parameters;
  bool optionsEnded = false;
  for (const std::string& argument : app.remaining()) {
    if (optionsEnded) {
      parameters.push_back(argument);
    } else if (argument == "--") {
      optionsEnded = true;
    } else if (argument.size() > 1 && argument[0] == '-' && argument[1] != '.' &&
               !std::isdigit(static_cast<unsigned char>(argument[1]))) {
      throw noOption(argument, app);
    } else {
      parameters.push_back(argument);
    }
  }
  return parameters;
}

void checkTarget(const Options& options) {
  if (!options.load) {
    if (options.url.empty()) throw UsageError("URL and METHOD are missing; vxcall --help shows the usage");
    if (options.method.empty()) throw UsageError("METHOD is missing; vxcall --help shows the usage");
  } else if (!options.url.empty()) {
    throw UsageError("--load takes no URL, METHOD or PARAM: they are in the file");
  }
  if (options.save && options.proxy) {
    throw UsageError("a proxy is not saved with a call; give --proxy to the vxcall that loads it");
  }
}

}  // namespace

CommandLine parseCommandLine(int argc, const char* const* argv) {
  Options options;
  CLI::App app("", "vxcall");
  app.formatter(std::make_shared<HelpFormatter>());
  app.allow_extras();
  addCallOptions(app, options);
  addSOAPOptions(app, options);
  addHTTPOptions(app, options);
  addOutputOptions(app, options);
  app.set_version_flag("--version", "vxcall " VXCALL_VERSION, "show the version");
  app.set_help_flag("-h,--help", "show this help");
  excludeContradictions(app);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return {std::nullopt, app.help()};
  } catch (const CLI::CallForVersion& version) {
    return {std::nullopt, std::string(version.what()) + "\n"};
  } catch (const CLI::ParseError& error) {
    std::string line = describeParseError(error, app);
    throw UsageError(line + (line.ends_with('?') ? "" : "; vxcall --help shows the options"));
  }
  options.parameters = takeParameters(app);
  checkTarget(options);
  return {std::move(options), {}};
}

}  // namespace tools::vxcall
