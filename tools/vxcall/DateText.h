/* The check of a date that a user typed. */
#ifndef VXCALL_DATE_TEXT_H
#define VXCALL_DATE_TEXT_H

#include <string>

namespace vxcall {

/*
 * Whether a text is a date that exists, in the form YYYY-MM-DD[Thh:mm:ss[.fff][Z|+hh:mm|-hh:mm]],
 * with or without the dashes. The library itself reads anything as some date.
 */
bool isDateText(const std::string& text);

}  // namespace vxcall

#endif
