/* The function that a fuzzing engine calls. */
#include "Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::run(fuzz::ByteReader({reinterpret_cast<const char*>(bytes), size}));
  return 0;
}
