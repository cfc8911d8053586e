#include "Kind.h"

#include <BQ/BQNumber.h>
#include <VX/VXTypes.h>

namespace tools::vxserve {
namespace {

bool fits32Bits(BQTypeRef number) {
  int32_t value = 0;
  return BQNumberGetValue(static_cast<const BQNumber*>(number), kBQNumberSInt32Type, &value);
}

}  // namespace

std::string_view nameOf(Kind kind) {
  switch (kind) {
    case Kind::none:
      return "undef";
    case Kind::integer:
      return "int";
    case Kind::real:
      return "double";
    case Kind::boolean:
      return "boolean";
    case Kind::text:
      return "string";
    case Kind::date:
      return "dateTime.iso8601";
    case Kind::data:
      return "base64";
    case Kind::array:
      return "array";
    case Kind::structure:
      return "struct";
  }
  return {};
}

Kind kindOf(BQTypeRef value) {
  if (value == nullptr) return Kind::none;
  switch (VXGetVXTypeIDFromBQType(value)) {
    case kVXTypeInteger:
      return fits32Bits(value) ? Kind::integer : Kind::none;
    case kVXTypeDouble:
      return Kind::real;
    case kVXTypeBoolean:
      return Kind::boolean;
    case kVXTypeString:
      return Kind::text;
    case kVXTypeDate:
      return Kind::date;
    case kVXTypeData:
      return Kind::data;
    case kVXTypeArray:
      return Kind::array;
    case kVXTypeDictionary:
      return Kind::structure;
    case kVXTypeNull:
    case kVXTypeUnknown:
      break;
  }
  return Kind::none;
}

}  // namespace tools::vxserve
