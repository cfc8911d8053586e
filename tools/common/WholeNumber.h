/* The check of an option that takes a whole number. */
#ifndef TOOLS_COMMON_WHOLE_NUMBER_H
#define TOOLS_COMMON_WHOLE_NUMBER_H

#include <charconv>
#include <limits>
#include <string>

#include <CLI/CLI.hpp>

#include "common/Text.h"

namespace tools {

/* Without the text that a check adds to the help, which names the values by itself. */
template <typename Number>
CLI::Validator wholeNumber(Number least, Number most = std::numeric_limits<Number>::max()) {
  auto check = [least, most](const std::string& text) {
    Number value{};
    const char* end = text.data() + text.size();
    auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error == std::errc() && stop == end && value >= least && value <= most) return std::string();
    std::string complaint = "'";
    complaint.append(maskURL(text, true)).append("' is no whole number from ").append(std::to_string(least));
    return complaint.append(" to ").append(std::to_string(most));
  };
  return CLI::Validator(check, "");
}

}  // namespace tools

#endif
