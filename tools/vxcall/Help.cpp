#include "Help.h"

#include <iomanip>
#include <sstream>

namespace tools::vxcall {
namespace {

constexpr const char* kIntroduction =
    R"(Usage: vxcall [OPTION...] URL METHOD [PARAM...]
       vxcall [OPTION...] --load FILE
Calls a method of an XML-RPC or SOAP server and prints the result as JSON.

PARAM is [NAME=][TYPE:]VALUE. TYPE is int, double, bool, string, date, base64,
file (VALUE names a file of bytes), nil or json (VALUE is JSON, or @FILE).
Without TYPE a VALUE is what it reads as. A FILE of - is standard input.
XML-RPC sends no names: a=1 is sent as 1 there; string:a=1 is the text a=1.

)";

constexpr const char* kConclusion = R"(
Examples:
  vxcall http://localhost:8080/RPC2 add 20 22
  vxcall http://localhost:8080/RPC2 echo 'json:{"a": [1, true]}' | jq .a
  vxcall -p soap-2001 -n urn:interop http://localhost:8080/soap add a=1 b=2
  vxcall --save add.call http://localhost:8080/RPC2 add 1 2
  vxcall --load add.call --timeout 5

Exit status: 0 result, 1 fault of the server, 2 wrong usage, 3 any other failure
)";

constexpr int kNamesWidth = 26;

/* "-t, --timeout SECONDS" */
std::string namesOf(const CLI::Option& option) {
  std::string names = option.get_snames().empty() ? "    " : "-" + option.get_snames().front() + ", ";
  names += "--" + option.get_lnames().front();
  return option.get_type_size() == 0 ? names : names + " " + option.get_type_name();
}

}  // namespace

std::string HelpFormatter::make_help(const CLI::App* app, std::string, CLI::AppFormatMode) const {
  std::ostringstream text;
  text << kIntroduction;
  for (const CLI::Option* option : app->get_options()) {
    if (option->nonpositional()) {
      text << "  " << std::left << std::setw(kNamesWidth) << namesOf(*option) << "  "
           << option->get_description() << "\n";
    }
  }
  text << kConclusion;
  return text.str();
}

}  // namespace tools::vxcall
