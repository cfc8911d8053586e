/* XML-RPC replies as a client reads them. */
#include <VX/VX.h>

#include "Fuzz.h"

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace fuzz;
  static VXProtocolHandlerRef handler = VXProtocolHandlerCreate(nullptr, kVXXMLRPCProtocol);
  auto document = own(BQDataCreate(bytes, static_cast<BQIndex>(size)));
  auto read = [&] {
    return own(VXProtocolHandlerCopyReplyDictionary(handler, BQSTR("method"), document.get()));
  };
  auto result = read();
  check(result != nullptr);
  check(describe(result.get()) == describe(read().get()));
  BQTypeRef value = BQDictionaryGetValue(result.get(), kVXMethodInvocationResult);
  /* What was read may be written again. Names of members are not escaped, so that it need not parse. */
  auto written = own(VXProtocolHandlerCopyReplyDocument(handler, nullptr, value));
  own(VXProtocolHandlerCopyReplyDictionary(handler, BQSTR("method"), written.get()));
  return 0;
}
