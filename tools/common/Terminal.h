/* Text that people read on a terminal or in a log. */
#ifndef TOOLS_TERMINAL_H
#define TOOLS_TERMINAL_H

#include <string>
#include <string_view>

namespace tools {

/*
 * The text without anything that a terminal obeys or that changes the order in which it shows a line: C0 and
 * C1 controls, DEL and bidirectional marks become \uXXXX, bytes that are not UTF-8 become \xXX. Tabs and line
 * ends (LF and CR LF) stay. JSON remains equal JSON.
 */
std::string escapeControls(std::string_view text);

/* The same as one line: tabs and line ends become blanks. */
std::string singleLine(std::string_view text);

/* Prints "PROGRAM: TEXT" as one such line to standard error. */
void complain(const char* program, std::string_view text);

}  // namespace tools

#endif
