/* Keeps the library's own notes off standard error. */
#ifndef TOOLS_LIBRARY_MUTE_H
#define TOOLS_LIBRARY_MUTE_H

#include <cstdio>

namespace tools {

/*
 * While it lives, what is printed to the stream of standard error is dropped: the library notes
 * there that a reply does not parse, which the user is told in the one line of the failure. Neither
 * the descriptor nor what writes to it directly is touched. With the library's debug variables in
 * the environment nothing is dropped.
 */
class LibraryMute {
 public:
  LibraryMute();
  ~LibraryMute() { stderr = original_; }
  LibraryMute(const LibraryMute&) = delete;
  LibraryMute& operator=(const LibraryMute&) = delete;

 private:
  std::FILE* original_;
};

}  // namespace tools

#endif
