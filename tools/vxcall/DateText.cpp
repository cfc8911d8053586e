#include "DateText.h"

#include <chrono>
#include <regex>

namespace vxcall {

bool isDateText(const std::string& text) {
  /* The matcher recurses with the length of the text. */
  constexpr size_t kLongest = 40;
  static const std::regex pattern(
      R"((\d{4})(-?)(\d\d)\2(\d\d)(T(\d\d):(\d\d):(\d\d)(\.\d{1,9})?(Z|[+-](\d\d):(\d\d))?)?)");

  std::smatch match;
  if (text.size() > kLongest || !std::regex_match(text, match, pattern)) return false;
  auto number = [&match](size_t group) {
    return match[group].matched ? static_cast<unsigned>(std::stoul(match[group])) : 0u;
  };
  std::chrono::year_month_day day{std::chrono::year(static_cast<int>(number(1))),
                                  std::chrono::month(number(3)), std::chrono::day(number(4))};
  return day.ok() && number(6) < 24 && number(7) < 60 && number(8) < 60 && number(11) < 24 && number(12) < 60;
}

}  // namespace vxcall
