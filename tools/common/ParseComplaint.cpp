#include "common/ParseComplaint.h"

namespace tools {
namespace {

/* The option whose name ends in front of a text that the message has, or null. */
const CLI::Option* optionInFront(const std::string& message, const std::string& text, const CLI::App& app) {
  size_t end = message.find(text), start = message.find("--");
  return end == std::string::npos || start >= end
             ? nullptr
             : app.get_option_no_throw(message.substr(start, end - start));
}

std::string nameOf(const CLI::Option& option) {
  return "--" + option.get_lnames().front();
}

}  // namespace

std::string describeParseError(const CLI::ParseError& error, const CLI::App& app) {
  std::string message = error.what();
  if (const CLI::Option* option = optionInFront(message, ": 1 required", app)) {
    return nameOf(*option) + " is given without its " + option->get_type_name();
  }
  if (const CLI::Option* option = optionInFront(message, ": At Most 1 required", app)) {
    return nameOf(*option) + " is given more than once";
  }
  /* Values have checks of their own, so that only flags cannot convert what they get. */
  if (const CLI::Option* option = optionInFront(message, " = ", app)) {
    return nameOf(*option) + " takes no value";
  }
  return message;
}

}  // namespace tools
