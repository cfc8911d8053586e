/* The kinds of values that methods take and give. */
#ifndef VXSERVE_KIND_H
#define VXSERVE_KIND_H

#include <string_view>

#include <BQ/BQBase.h>

namespace tools::vxserve {

enum class Kind { none, integer, real, boolean, text, date, data, array, structure };

/* Every kind that a value can have. */
inline constexpr Kind kKinds[] = {Kind::integer, Kind::real, Kind::boolean, Kind::text,
                                  Kind::date,    Kind::data, Kind::array,   Kind::structure};

/* The name that XML-RPC has for a kind; "undef" for none. */
std::string_view nameOf(Kind kind);

/* None for null, the null object, and integers beyond 32 bits, which neither protocol can carry. */
Kind kindOf(BQTypeRef value);

}  // namespace tools::vxserve

#endif
