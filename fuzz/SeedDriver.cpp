/*
 * Runs a fuzz target without an engine: over each file of some folders, and over the file cut short and with
 * one byte replaced or inserted, at up to kPlaces places.
 */
#include <cstdio>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "Fuzz.h"

namespace {

constexpr size_t kPlaces = 64;
constexpr std::string_view kBytes("\0\r\x01 <>&;'\"=/:-.!?#]x9\x7F\x80\xBF\xC0\xED\xEF\xFF", 28);

/* The bytes are in a block of their own size, so that a sanitizer sees a read beyond it. */
void run(const char* what, const std::filesystem::path& file, size_t place, std::string_view bytes) {
  std::printf("%s %zu %s\n", what, place, file.c_str()); /* a crash leaves this as the last line */
  std::fflush(stdout);
  auto data = fuzz::makeData(bytes);
  fuzz::run(fuzz::ByteReader(fuzz::viewOf(data.get())));
}

bool runAll(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(stream)), {});
  if (!stream) return false;
  run("whole", file, 0, bytes);
  for (size_t place = 0; place < bytes.size(); place += bytes.size() / kPlaces + 1) {
    run("cut", file, place, bytes.substr(0, place));
    for (char byte : kBytes) {
      run("replaced", file, place, std::string(bytes).replace(place, 1, 1, byte));
      run("inserted", file, place, std::string(bytes).insert(place, 1, byte));
    }
  }
  return true;
}

}  // namespace

/* usage: TARGET FOLDER... */
int main(int argc, char** argv) {
  std::set<std::filesystem::path> files;
  for (int i = 1; i < argc; ++i) {
    std::filesystem::directory_iterator begin(argv[i]);
    files.insert(begin, {});
  }
  for (const auto& file : files)
    if (!runAll(file)) return EXIT_FAILURE;
  return files.empty() ? EXIT_FAILURE : EXIT_SUCCESS;
}
