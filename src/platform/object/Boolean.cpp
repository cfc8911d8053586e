#include <BQ/BQBoolean.h>

#include "platform/object/Classes.h"
#include "platform/object/Object.h"

struct BQBoolean {
  BQRuntimeBase base;
};

namespace bq {

const BQRuntimeClass kBooleanClass = {0,       "BQBoolean", nullptr, nullptr, nullptr,
                                      nullptr, nullptr,     nullptr, nullptr};

static const BQBoolean theTrue = {{kBooleanTypeID, kImmortal, 1}};
static const BQBoolean theFalse = {{kBooleanTypeID, kImmortal, 1}};

}  // namespace bq

const BQBoolean* const kBQBooleanTrue = &bq::theTrue;
const BQBoolean* const kBQBooleanFalse = &bq::theFalse;

BQTypeID BQBooleanGetTypeID(void) {
  return bq::kBooleanTypeID;
}

bool BQBooleanGetValue(const BQBoolean* boolean) {
  return boolean == kBQBooleanTrue;
}
