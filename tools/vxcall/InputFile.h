/* Files that the command line names. */
#ifndef VXCALL_INPUT_FILE_H
#define VXCALL_INPUT_FILE_H

#include <string>

namespace tools::vxcall {

/*
 * All bytes of a file; those of standard input for "-", which can be read once only. Throws
 * UsageError.
 */
std::string readInput(const std::string& path);

/* How to name the file to the user. */
std::string nameOfInput(const std::string& path);

}  // namespace tools::vxcall

#endif
