#include "Call.h"

#include <BQ/BQNumber.h>

#include "Fault.h"
#include "common/Text.h"

namespace tools::vxserve {

int32_t Call::integer(size_t index) const {
  int32_t number = 0;
  BQNumberGetValue(static_cast<const BQNumber*>(arguments[index].get()), kBQNumberSInt32Type, &number);
  return number;
}

double Call::real(size_t index) const {
  double number = 0;
  BQNumberGetValue(static_cast<const BQNumber*>(arguments[index].get()), kBQNumberDoubleType, &number);
  return number;
}

std::string_view Call::text(size_t index) const {
  return textOf(arguments[index].get());
}

const BQArray* Call::array(size_t index) const {
  return static_cast<const BQArray*>(arguments[index].get());
}

const BQDictionary* Call::structure(size_t index) const {
  return static_cast<const BQDictionary*>(arguments[index].get());
}

void Call::hold(double seconds) {
  /* The comparison is turned round so that it fails for what is no number. */
  if (!(seconds >= 0 && delay + seconds <= kMaximumDelay)) {
    throw Fault(kFaultInvalidParameters, "a request can be held back for 0 to 600 seconds");
  }
  delay += seconds;
}

}  // namespace tools::vxserve
