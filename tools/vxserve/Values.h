/* Values made and taken apart. */
#ifndef VXSERVE_VALUES_H
#define VXSERVE_VALUES_H

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <BQ/BQBase.h>

#include "common/Value.h"

namespace tools::vxserve {

/* Throws Fault if the number needs more than 32 bits. */
Value makeInteger(int64_t number);
Value makeReal(double number);
Value makeBoolean(bool truth);
/* From UTF-8; what is none gives an empty text. */
Value makeText(std::string_view text);
Value makeData(std::span<const uint8_t> bytes);
Value makeArray(std::span<const Value> values);
Value makeArray(std::initializer_list<Value> values);

using Member = std::pair<const BQString*, Value>;
Value makeStruct(std::initializer_list<Member> members);

/* What an array holds, and the keys and values of a structure; borrowed. */
std::vector<BQTypeRef> itemsOf(const BQArray* array);
std::vector<std::pair<BQTypeRef, BQTypeRef>> membersOf(const BQDictionary* structure);

/* A value as an array or a structure, borrowed; null if it is of another class. */
const BQArray* asArray(BQTypeRef value);
const BQDictionary* asStruct(BQTypeRef value);

/* The value of a 32-bit integer. Throws Fault, with what the number is for, if it is anything else. */
int32_t integerOf(BQTypeRef value, std::string_view purpose);

}  // namespace tools::vxserve

#endif
