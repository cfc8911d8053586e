/* Property lists. */
#include "Fuzz.h"

namespace {

using namespace fuzz;

Owned<const void> readList(const BQData* document) {
  const BQString* error = nullptr;
  auto value = own(BQPropertyListCreateFromXMLData(document, &error));
  auto ownedError = own(error);
  check((value == nullptr) == (error != nullptr));
  return value;
}

/* Every list that is read can be written, and reads back as it was. */
void checkList(const BQData* document) {
  auto value = readList(document);
  if (value == nullptr) return;
  auto written = own(BQPropertyListCreateXMLData(value.get()));
  check(written != nullptr);
  check(BQEqual(readList(written.get()).get(), value.get()));
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  auto document = own(BQDataCreate(bytes, static_cast<BQIndex>(size)));
  checkList(document.get());
  return 0;
}
