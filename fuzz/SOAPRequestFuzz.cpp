/* SOAP requests as a server reads them, and what it answers. */
#include "SOAPOverrides.h"

namespace {

using namespace fuzz;

void answer(VXProtocolHandlerRef handler, const BQDictionary* request) {
  BQTypeRef parameters = BQDictionaryGetValue(request, BQSTR("/VXMethodParameters"));
  own(VXProtocolHandlerCopyReplyDocument(handler, request, parameters));
  auto fault = own(VXProtocolHandlerCopyFaultDocument(handler, request, request));
  check(fault != nullptr);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  auto document = own(BQDataCreate(bytes, static_cast<BQIndex>(size)));
  auto older = own(VXProtocolHandlerCopyRequestDictionary(olderHandler(), document.get()));
  auto newer = own(VXProtocolHandlerCopyRequestDictionary(newerHandler(), document.get()));
  check(describe(older.get()) == describe(newer.get()));
  if (newer == nullptr) return 0;
  answer(olderHandler(), older.get());
  answer(newerHandler(), newer.get());
  return 0;
}
