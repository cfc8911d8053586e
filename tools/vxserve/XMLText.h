/* Text made fit for places where the library writes it as it stands. */
#ifndef VXSERVE_XML_TEXT_H
#define VXSERVE_XML_TEXT_H

#include <string>
#include <string_view>

namespace tools::vxserve {

/* The characters that would end or begin markup. */
inline constexpr std::string_view kMarkupCharacters = "&<>";

/* The text with those characters as entities. */
std::string escapeMarkup(std::string_view text);

}  // namespace tools::vxserve

#endif
