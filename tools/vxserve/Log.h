/* The log: a line for each request. */
#ifndef VXSERVE_LOG_H
#define VXSERVE_LOG_H

#include <chrono>
#include <string>
#include <string_view>

namespace tools::vxserve {

struct LogEntry {
  std::string peer;
  std::string_view protocol;
  std::string_view method;
  std::string outcome;
  std::chrono::microseconds duration;
};

/* Writes the line to standard error, whole, whichever thread calls. */
void writeLog(const LogEntry& entry);

/*
 * A text of a peer as one word of bounded length: blanks, control characters, quotes, backslashes and
 * all beyond ASCII as \xHH, so that it can neither forge a field nor talk to a terminal.
 */
std::string quoteForLog(std::string_view text);

}  // namespace tools::vxserve

#endif
