/* What the parser of the command line complains of. */
#ifndef TOOLS_PARSE_COMPLAINT_H
#define TOOLS_PARSE_COMPLAINT_H

#include <string>

#include <CLI/CLI.hpp>

namespace tools {

/* In one line and in the words of the tools, where the parser has rougher ones. */
std::string describeParseError(const CLI::ParseError& error, const CLI::App& app);

}  // namespace tools

#endif
