/* The command line. */
#ifndef VXCALL_OPTIONS_H
#define VXCALL_OPTIONS_H

#include <optional>
#include <string>
#include <vector>

namespace tools::vxcall {

/* What the user asked for, each value as it was written but known to be one of those allowed. */
struct Options {
  std::string url;
  std::string method;
  std::vector<std::string> parameters;

  std::string protocol = "xml-rpc";
  std::optional<std::string> methodNamespace;
  std::optional<std::string> style;
  std::optional<std::string> resultName;
  std::vector<std::string> soapHeaders;

  std::vector<std::string> headers;
  std::string httpVersion = "1.1";
  std::optional<std::string> proxy;
  bool followsRedirects = true;
  int timeoutSeconds = 0;

  bool async = false;
  long repeat = 1;
  std::string output = "json";
  bool verbose = false;
  bool printRequest = false;
};

/*
 * Reads the command line. Nothing is returned when it asked for the help or the version, which then
 * stands on standard output. Throws UsageError.
 */
std::optional<Options> parseOptions(int argc, const char* const* argv);

}  // namespace tools::vxcall

#endif
