/* Makes values of the bytes of an input. */
#ifndef FUZZ_VALUE_BUILDER_H
#define FUZZ_VALUE_BUILDER_H

#include "Fuzz.h"

namespace fuzz {

/* What the values may be. */
enum class Carrier {
  /*
   * What both protocols carry whole: no empty or blank text, no empty data or structure, integers of
   * 32 bits, doubles of six digits, dates of whole seconds, members whose names are names of XML.
   */
  protocols,
  /* Whatever a property list can hold. */
  propertyList,
};

/* A value, owned by the caller; never null. */
Owned<const void> buildValue(ByteReader& input, Carrier carrier);

}  // namespace fuzz

#endif
