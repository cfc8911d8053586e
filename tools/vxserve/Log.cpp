#include "Log.h"

#include <cstdio>
#include <ctime>

#include <unistd.h>

namespace tools::vxserve {
namespace {

/* UTC with milliseconds. */
std::string timeStamp() {
  auto now = std::chrono::system_clock::now();
  std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  auto since = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count();
  std::tm fields = {};
  gmtime_r(&seconds, &fields);
  char date[32];
  size_t length = std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &fields);
  char fraction[8];
  std::snprintf(fraction, sizeof fraction, ".%03dZ", static_cast<int>(since % 1000));
  return std::string(date, length) + fraction;
}

}  // namespace

void writeLog(const LogEntry& entry) {
  std::string line = timeStamp() + " " + entry.peer + " " + std::string(entry.protocol) + " " +
                     quoteForLog(entry.method) + " " + entry.outcome + " " +
                     std::to_string(entry.duration.count()) + "us\n";
  /* One write, so that lines of two threads do not mix. A log that nobody reads any more is no reason to
   * stop. */
  [[maybe_unused]] ssize_t written = write(STDERR_FILENO, line.data(), line.size());
}

std::string quoteForLog(std::string_view text) {
  constexpr size_t kMaximumLength = 200;
  if (text.empty()) return "-";
  std::string word;
  for (unsigned char c : text.substr(0, kMaximumLength)) {
    if (c > ' ' && c < 0x7F && c != '\\' && c != '"') {
      word += static_cast<char>(c);
    } else {
      char code[5];
      std::snprintf(code, sizeof code, "\\x%02X", c);
      word += code;
    }
  }
  if (text.size() > kMaximumLength) word += "...";
  return word;
}

}  // namespace tools::vxserve
