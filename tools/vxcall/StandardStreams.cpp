#include "StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace tools::vxcall {

void occupyStandardStreams() {
  for (int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    /* Gets the lowest number that is free, which is this one. */
    [[maybe_unused]] int taken = open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

bool writeOutput(const std::string& text) {
  return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0;
}

bool writeFile(const std::string& path, const std::string& text) {
  if (path == "-") return writeOutput(text);
  std::FILE* file = std::fopen(path.c_str(), "wbe");
  if (file == nullptr) return false;
  bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  return std::fclose(file) == 0 && written;
}

}  // namespace tools::vxcall
