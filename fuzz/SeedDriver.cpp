/* Runs a fuzz target over the files of folders, where no fuzzing engine is linked. */
#include <cstdio>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "Fuzz.h"

namespace {

std::vector<std::filesystem::path> filesIn(const char* folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

/* False if the file cannot be read. The bytes are in a block of just their size. */
bool run(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::vector<char> bytes((std::istreambuf_iterator<char>(stream)), {});
  if (!stream) return false;
  LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  return true;
}

}  // namespace

/* usage: TARGET FOLDER...; the name of a file is written before it runs, so that a crash shows whose it is.
 */
int main(int argc, char** argv) {
  size_t count = 0;
  for (int i = 1; i < argc; ++i) {
    for (const std::filesystem::path& file : filesIn(argv[i])) {
      std::printf("%s\n", file.c_str());
      std::fflush(stdout);
      if (!run(file)) return EXIT_FAILURE;
      ++count;
    }
  }
  std::printf("%zu inputs\n", count);
  return count > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
