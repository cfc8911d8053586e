#include <BQ/BQNull.h>

#include "platform/object/Classes.h"
#include "platform/object/Object.h"

struct BQNull {
  BQRuntimeBase base;
};

namespace bq {

const BQRuntimeClass kNullClass = {0,       "BQNull", nullptr, nullptr, nullptr,
                                   nullptr, nullptr,  nullptr, nullptr};

static const BQNull theNull = {{kNullTypeID, kImmortal, 1}};

}  // namespace bq

const BQNull* const kBQNull = &bq::theNull;

BQTypeID BQNullGetTypeID(void) {
  return bq::kNullTypeID;
}
