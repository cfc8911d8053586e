#include "DateText.h"

#include <cctype>

#include <algorithm>
#include <chrono>

namespace tools::vxcall {
namespace {

bool isDigit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

/* Takes a text from its front; what is not as expected makes all of it invalid. */
class Cursor {
 public:
  explicit Cursor(std::string_view text) : rest_(text) {}

  bool skip(char c) {
    if (!rest_.starts_with(c)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  void require(char c) { valid_ = skip(c) && valid_; }

  /* Exactly `width` digits, of a number up to `most`. */
  unsigned number(size_t width, unsigned most) {
    std::string_view digits = rest_.substr(0, width);
    rest_.remove_prefix(digits.size());
    unsigned value = 0;
    for (char c : digits) value = value * 10 + static_cast<unsigned>(c - '0');
    valid_ = valid_ && digits.size() == width && std::all_of(digits.begin(), digits.end(), isDigit) &&
             value <= most;
    return value;
  }

  void fraction() {
    valid_ = valid_ && !rest_.empty() && isDigit(rest_[0]);
    while (!rest_.empty() && isDigit(rest_[0])) rest_.remove_prefix(1);
  }

  bool atEnd() const { return valid_ && rest_.empty(); }

 private:
  std::string_view rest_;
  bool valid_ = true;
};

bool skipDay(Cursor& cursor) {
  int year = static_cast<int>(cursor.number(4, 9999));
  bool dashes = cursor.skip('-');
  unsigned month = cursor.number(2, 12);
  if (dashes) cursor.require('-');
  unsigned day = cursor.number(2, 31);
  return std::chrono::year_month_day(std::chrono::year(year), std::chrono::month(month),
                                     std::chrono::day(day))
      .ok();
}

void skipTime(Cursor& cursor) {
  cursor.number(2, 23);
  cursor.require(':');
  cursor.number(2, 59);
  cursor.require(':');
  cursor.number(2, 59);
  if (cursor.skip('.')) cursor.fraction();
  if (cursor.skip('+') || cursor.skip('-')) {
    cursor.number(2, 23);
    cursor.require(':');
    cursor.number(2, 59);
  } else {
    cursor.skip('Z');
  }
}

}  // namespace

bool isDateText(std::string_view text) {
  Cursor cursor(text);
  bool dayExists = skipDay(cursor);
  if (cursor.skip('T')) skipTime(cursor);
  return dayExists && cursor.atEnd();
}

}  // namespace tools::vxcall
