/* The arguments of a method from the parameters of a request. */
#ifndef VXSERVE_BINDING_H
#define VXSERVE_BINDING_H

#include <span>
#include <vector>

#include <BQ/BQBase.h>

#include "Method.h"
#include "common/Value.h"

namespace tools::vxserve {

/*
 * The arguments in the order of the first signature that they fit. Where a text should stand and
 * none does, it is empty: an empty value arrives as no parameter at all. Throws Fault.
 */
std::vector<Value> bindByPosition(const Method& method, std::span<const BQTypeRef> parameters);

/*
 * The arguments by the names of the method's only signature, or by their place where the names are
 * others, converted to the kinds that it wants where nothing is lost. Throws Fault.
 */
std::vector<Value> bindByName(const Method& method, const BQDictionary* parameters, const BQArray* order);

/* A value as one of that kind, with the conversions of bindByName. Throws Fault with the purpose. */
Value convert(BQTypeRef value, Kind kind, std::string_view purpose);

}  // namespace tools::vxserve

#endif
