/* The check of a date that a user typed. */
#ifndef VXCALL_DATE_TEXT_H
#define VXCALL_DATE_TEXT_H

#include <string_view>

namespace tools::vxcall {

/*
 * Whether a text is a date that exists, in the form YYYY-MM-DD[Thh:mm:ss[.f][Z|+hh:mm|-hh:mm]],
 * with or without the dashes. The library itself reads anything as some date.
 */
bool isDateText(std::string_view text);

}  // namespace tools::vxcall

#endif
