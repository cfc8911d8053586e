/* SOAP replies as a client reads them. */
#include "SOAPOverrides.h"

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace fuzz;
  auto document = own(BQDataCreate(bytes, static_cast<BQIndex>(size)));
  auto read = [&](VXProtocolHandlerRef handler) {
    return own(VXProtocolHandlerCopyReplyDictionary(handler, BQSTR("method"), document.get()));
  };
  auto older = read(olderHandler());
  auto newer = read(newerHandler());
  check(older != nullptr && newer != nullptr);
  check(describe(older.get()) == describe(newer.get()));
  return 0;
}
