#include "InputFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <memory>

#include "common/Text.h"
#include "common/UsageError.h"

namespace tools::vxcall {
namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

UsageError unreadable(const std::string& path) {
  return UsageError("cannot read " + nameOfInput(path) + ": " + std::strerror(errno));
}

File openStandardInput() {
  static bool wasOpened = false;
  if (wasOpened) throw UsageError("standard input, '-', can be read once only");
  wasOpened = true;
  return {stdin, [](std::FILE*) { return 0; }};
}

}  // namespace

std::string readInput(const std::string& path) {
  File file = path == "-" ? openStandardInput() : File(std::fopen(path.c_str(), "rbe"), std::fclose);
  if (file == nullptr) throw unreadable(path);
  std::string bytes;
  char chunk[65536];
  size_t count;
  do {
    count = std::fread(chunk, 1, sizeof chunk, file.get());
    bytes.append(chunk, count);
  } while (count == sizeof chunk);
  if (std::ferror(file.get()) != 0) throw unreadable(path);
  return bytes;
}

std::string nameOfInput(const std::string& path) {
  return path == "-" ? "standard input" : maskAnyURL(path);
}

}  // namespace tools::vxcall
