/* The three streams that every program begins with. */
#ifndef VXCALL_STANDARD_STREAMS_H
#define VXCALL_STANDARD_STREAMS_H

#include <string>

namespace tools::vxcall {

/*
 * Takes the places of the standard streams that the process was started without, so that no
 * connection gets their numbers and with them what is printed. Reading from such a place, and
 * writing to it, fails.
 */
void occupyStandardStreams();

/*
 * Writes all of a text to standard output; errno says why it could not. A terminal gets it with its control
 * characters escaped, a file or a pipe byte for byte.
 */
bool writeOutput(const std::string& text);

/* The same to a file, or to standard output for "-". */
bool writeFile(const std::string& path, const std::string& text);

}  // namespace tools::vxcall

#endif
