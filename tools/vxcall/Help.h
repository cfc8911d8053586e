/* The text of --help. */
#ifndef VXCALL_HELP_H
#define VXCALL_HELP_H

#include <string>

#include <CLI/CLI.hpp>

namespace tools::vxcall {

/* One line for each option, between what surrounds them; fits a terminal of 80 columns. */
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override;
};

}  // namespace tools::vxcall

#endif
