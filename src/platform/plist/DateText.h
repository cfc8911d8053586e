/* Dates as text: ISO 8601, extended format, UTC. */
#ifndef BQ_PLIST_DATE_TEXT_H
#define BQ_PLIST_DATE_TEXT_H

#include <BQ/BQDate.h>

#include <optional>
#include <string>
#include <string_view>

namespace bq {

/*
 * Appends a date such as `2001-01-01T00:00:00Z`. A fraction of a second follows the seconds if there
 * is one; a year before 0 or after 9999 has a sign. The text reads back as the same time (within
 * 2^-54 seconds in the last half second before 2001). False if the time has no date.
 */
bool appendDate(std::string& text, BQAbsoluteTime time);

/* The time of such a text; nothing if it is none, or the date is not in the calendar. */
std::optional<BQAbsoluteTime> parseDate(std::string_view text);

}  // namespace bq

#endif
