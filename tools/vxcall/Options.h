/* The command line. */
#ifndef VXCALL_OPTIONS_H
#define VXCALL_OPTIONS_H

#include <cstdint>

#include <optional>
#include <string>
#include <vector>

namespace tools::vxcall {

/*
 * What the user asked for, each value as it was written but known to be one of those allowed, and
 * all of them together to make sense.
 */
struct Options {
  std::string url;
  std::string method;
  std::vector<std::string> parameters;

  /* The file of a saved call, in place of the three above and the protocol. */
  std::optional<std::string> load;

  std::string protocol = "xml-rpc";
  std::optional<std::string> methodNamespace;
  std::optional<std::string> style;
  std::optional<std::string> resultName;
  std::vector<std::string> soapHeaders;

  std::vector<std::string> headers;
  std::optional<std::string> httpVersion;
  std::optional<std::string> proxy;
  bool refusesRedirects = false;
  std::optional<int> timeoutSeconds;
  std::optional<std::string> certificateAuthority;
  std::optional<int64_t> replyLimit;

  bool async = false;
  long repeat = 1;
  std::string output = "json";
  bool verbose = false;

  /* In place of the call. */
  bool printRequest = false;
  std::optional<std::string> save;
};

/* The options, or what to print when the command line asked for the help or the version. */
struct CommandLine {
  std::optional<Options> options;
  std::string answer;
};

/* Throws UsageError. */
CommandLine parseCommandLine(int argc, const char* const* argv);

}  // namespace tools::vxcall

#endif
