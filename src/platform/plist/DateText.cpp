#include "platform/plist/DateText.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace bq {
namespace {

/* Reads the parts of a date one after the other. */
class DateReader {
 public:
  explicit DateReader(std::string_view text) : rest_(text) {}

  bool literal(char character) {
    if (!rest_.starts_with(character)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  /* A number of exactly two digits. */
  bool twoDigits(int8_t& number) { return digits(2, number); }

  /* Four digits, or, with a sign, any number of them. */
  bool year(int32_t& number) {
    bool negative = rest_.starts_with('-');
    if (!negative && !rest_.starts_with('+')) return digits(4, number);
    rest_.remove_prefix(1);
    if (!digits(rest_.find_first_not_of("0123456789"), number)) return false;
    if (negative) number = -number;
    return true;
  }

  /* `.123`, or nothing. */
  bool fraction(double& number) {
    if (!rest_.starts_with('.')) return true;
    size_t end = rest_.find_first_not_of("0123456789", 1);
    if (end == 1 || end == std::string_view::npos) return false;
    auto result = std::from_chars(rest_.data(), rest_.data() + end, number, std::chars_format::fixed);
    /* Too small for a number is as good as nothing. */
    if (result.ec != std::errc()) number = 0;
    rest_.remove_prefix(end);
    return true;
  }

  bool atEnd() const { return rest_.empty(); }

 private:
  template <class Number>
  bool digits(size_t count, Number& number) {
    if (count > rest_.size() ||
        rest_.substr(0, count).find_first_not_of("0123456789") != std::string_view::npos) {
      return false;
    }
    auto result = std::from_chars(rest_.data(), rest_.data() + count, number);
    rest_.remove_prefix(count);
    return result.ec == std::errc();
  }

  std::string_view rest_;
};

bool sameFields(const BQGregorianDate& first, const BQGregorianDate& second) {
  return first.year == second.year && first.month == second.month && first.day == second.day &&
         first.hour == second.hour && first.minute == second.minute && first.second == second.second;
}

}  // namespace

bool appendDate(std::string& text, BQAbsoluteTime time) {
  double whole = std::floor(time);
  double fraction = time - whole;
  /* A time just before 2001 has more digits than a fraction can hold. */
  if (fraction == 1) ++whole, fraction = 0;
  BQGregorianDate date = BQAbsoluteTimeGetGregorianDate(whole);
  if (!std::isfinite(time) || BQGregorianDateGetAbsoluteTime(date) != whole) return false;
  bool plainYear = date.year >= 0 && date.year <= 9999;
  char fields[64];
  std::snprintf(fields, sizeof fields,
                plainYear ? "%04d-%02d-%02dT%02d:%02d:%02d" : "%+05d-%02d-%02dT%02d:%02d:%02d", date.year,
                date.month, date.day, date.hour, date.minute, static_cast<int>(date.second));
  text += fields;
  if (fraction != 0) {
    char digits[512];
    auto end = std::to_chars(digits, digits + sizeof digits, fraction, std::chars_format::fixed);
    text.append(digits + 1, end.ptr);
  }
  text += 'Z';
  return true;
}

std::optional<BQAbsoluteTime> parseDate(std::string_view text) {
  DateReader reader(text);
  BQGregorianDate date{};
  int8_t second = 0;
  double fraction = 0;
  bool read = reader.year(date.year) && reader.literal('-') && reader.twoDigits(date.month) &&
              reader.literal('-') && reader.twoDigits(date.day) && reader.literal('T') &&
              reader.twoDigits(date.hour) && reader.literal(':') && reader.twoDigits(date.minute) &&
              reader.literal(':') && reader.twoDigits(second) && reader.fraction(fraction) &&
              reader.literal('Z') && reader.atEnd();
  if (!read) return std::nullopt;
  date.second = second;
  /* Fields out of range would be carried into their neighbours. */
  BQAbsoluteTime whole = BQGregorianDateGetAbsoluteTime(date);
  if (!sameFields(BQAbsoluteTimeGetGregorianDate(whole), date)) return std::nullopt;
  return whole + fraction;
}

}  // namespace bq
