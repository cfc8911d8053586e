#include "StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

#include "common/Terminal.h"

namespace tools::vxcall {
namespace {

bool writeText(std::FILE* file, const std::string& text) {
  const bool isTerminal = isatty(fileno(file)) != 0;
  const std::string escaped = isTerminal ? escapeControls(text) : "";
  const std::string& shown = isTerminal ? escaped : text;
  return std::fwrite(shown.data(), 1, shown.size(), file) == shown.size() && std::fflush(file) == 0;
}

}  // namespace

void occupyStandardStreams() {
  for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    /* Gets the lowest number that is free, which is this one. */
    [[maybe_unused]] int taken = open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

bool writeOutput(const std::string& text) {
  return writeText(stdout, text);
}

bool writeFile(const std::string& path, const std::string& text) {
  if (path == "-") return writeOutput(text);
  std::FILE* file = std::fopen(path.c_str(), "wbe");
  if (file == nullptr) return false;
  bool written = writeText(file, text);
  return std::fclose(file) == 0 && written;
}

}  // namespace tools::vxcall
