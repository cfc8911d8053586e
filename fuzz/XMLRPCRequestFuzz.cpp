/* XML-RPC requests as a server reads them, and what it answers. */
#include <VX/VX.h>

#include "Fuzz.h"

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace fuzz;
  static VXProtocolHandlerRef handler = VXProtocolHandlerCreate(nullptr, kVXXMLRPCProtocol);
  auto document = own(BQDataCreate(bytes, static_cast<BQIndex>(size)));
  auto request = own(VXProtocolHandlerCopyRequestDictionary(handler, document.get()));
  auto again = own(VXProtocolHandlerCopyRequestDictionary(handler, document.get()));
  check(describe(request.get()) == describe(again.get()));
  if (request == nullptr) return 0;
  BQTypeRef parameters = BQDictionaryGetValue(request.get(), BQSTR("/VXMethodParameters"));
  auto reply = own(VXProtocolHandlerCopyReplyDocument(handler, request.get(), parameters));
  auto fault = own(VXProtocolHandlerCopyFaultDocument(handler, request.get(), request.get()));
  check(fault != nullptr);
  return 0;
}
