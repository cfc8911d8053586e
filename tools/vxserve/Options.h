/* The command line. */
#ifndef VXSERVE_OPTIONS_H
#define VXSERVE_OPTIONS_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace tools::vxserve {

struct Options {
  std::string address = "127.0.0.1";
  uint16_t port = 8080;
  /* 0: as many as there are processors. */
  unsigned threads = 0;
  size_t maximumBody = size_t{64} << 20;
  unsigned deadlineSeconds = 30;
  bool log = false;
};

/*
 * Reads the command line. Nothing is returned when it asked for the help or the version, which then
 * stands on standard output. Throws UsageError.
 */
std::optional<Options> parseOptions(int argc, const char* const* argv);

}  // namespace tools::vxserve

#endif
