/* The library's values as JSON. */
#ifndef VXCALL_JSON_H
#define VXCALL_JSON_H

#include <nlohmann/json.hpp>

#include <BQ/BQBase.h>

#include "common/Value.h"

namespace tools::vxcall {

/* Objects keep the order of their members. */
using Json = nlohmann::ordered_json;

/* The deepest nesting of arrays and objects that a request can carry. */
constexpr int kMaximumNesting = 512;

/* An HTTP message as the objects "statusLine" and "headers"; null as null; other classes as their
 * description. */
Json jsonFromValue(BQTypeRef value);

/* Null is the null object. Throws UsageError for what no request can carry. */
Value valueFromJson(const Json& json);

}  // namespace tools::vxcall

#endif
